#pragma once

#include <QWidget>

class Console;
class FormHost;
class QStandardItemModel;
class QTableView;
class QTreeWidget;

// The IP table view (ciptbl): the terminal registry, every address ever seen with its
// PC number, its connection and whether it is on line, as a grid and as a list. It
// shows the table as it was read; Refresh reads it again.
class IpTableWindow : public QWidget {
    Q_OBJECT
public:
    // The address column's width, in twips.
    static constexpr int AddressTwips = 1400;

    explicit IpTableWindow(Console& console, QWidget* parent = nullptr);

    Console& console() { return console_; }
    QSize sizeHint() const override;
    // Reads the registry into the grid and the list.
    void refresh();

private:
    Console& console_;
    QStandardItemModel* data1_ = nullptr;
    QTableView* dbGrid1_ = nullptr;
    QTreeWidget* lstips_ = nullptr;
};

// "Terminal Attachment Infos": the view, or the open one brought forward.
void openIpTable(Console& console, FormHost& host);
