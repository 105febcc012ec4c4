#pragma once

#include "people/process_peek.h"

#include <QWidget>

class Console;
class FormHost;
class QLabel;
class QLineEdit;
class QListWidget;

// The process viewer (frmpeek) of one connected terminal: its processes on request,
// chosen ones ended, and a snapshot of its screen. It only sends requests; the answers
// come from the terminal's messages, and only its own terminal's are shown.
class PeekWindow : public QWidget {
    Q_OBJECT
public:
    // At most this many processes are listed; a terminal that sends more is cut short.
    static constexpr int MostProcesses = 5000;

    PeekWindow(Console& console, FormHost& host, QWidget* parent = nullptr);

    Console& console() { return console_; }
    // Looks into another terminal: its fields filled, the list emptied.
    void lookInto(int pc, int socket);
    int pc() const { return terminal_.pc; }

private:
    void addProcesses(const QStringList& processes, int pc);
    void killChosen();
    void askSnapshot();
    void showSnapshot(const QString& path, const QString& title, int pc);

    Console& console_;
    FormHost& host_;
    PeekTerminal terminal_;
    QLabel* lblpcno_ = nullptr;
    QLineEdit* txtsk_ = nullptr;
    QLineEdit* txtip_ = nullptr;
    QLineEdit* txthname_ = nullptr;
    QLineEdit* txtOS_ = nullptr;
    QListWidget* lstProc_ = nullptr;
    QLabel* lblsnap_ = nullptr;
};

// "Show Client PC Processes" for a PC whose connection is `socket`: the viewer, filled
// for it (an open viewer turns to it).
void openPeek(Console& console, FormHost& host, int pc, int socket);
