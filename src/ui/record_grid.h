#pragma once

class QTableView;
class QWidget;
class RecordTable;

// A grid that edits a RecordTable in place: the keys its numeric columns refuse never
// reach the editor, and the blank last row takes a new record.
QTableView* makeRecordGrid(RecordTable& table, QWidget* parent);
