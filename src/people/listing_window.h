#pragma once

#include <QWidget>

class Console;
class FormHost;
class QLineEdit;
class QTableWidget;
class QTimer;

// The terminal listing (frmTabList): one row per terminal with its session, state and
// connection. Every second (Tabtmr) the rows of terminals on line are brought up to
// date; an off-line terminal's row keeps what it last showed.
class ListingWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr int TickMs = 1000;

    // `terminals`: how many terminals the listing counts through, as the caller says.
    ListingWindow(Console& console, int terminals, QWidget* parent = nullptr);

    Console& console() { return console_; }
    // One tick of Tabtmr.
    void tick();
    QSize sizeHint() const override;

private:
    void fillRow(int pc);

    Console& console_;
    QTableWidget* msFlxg_ = nullptr;
    QLineEdit* txtNpc_ = nullptr;
    QLineEdit* txtinactpc_ = nullptr;
    QTimer* tabtmr_ = nullptr;
};

// Toolbar button 1: the listing for `terminals` terminals, or the open one brought forward.
void openListing(Console& console, FormHost& host, int terminals);
