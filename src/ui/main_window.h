#pragma once

#include "base/form_host.h"
#include "server/status_panels.h"

#include <QHash>
#include <QMainWindow>
#include <QPointer>

#include <array>

class Console;
class MessageWindow;
class QAbstractItemModel;
class QAction;
class QMdiSubWindow;
class QLabel;
class QListView;
class BackdropArea;
class QMenu;
class QTimer;
class WidgetPrompts;

// The console's frame: menus, toolbar and terminal pop-up menu made from one table of
// actions, the terminal list, the status bar and the two timers. It shows what the logic
// holds and calls the logic's procedures; every window it opens goes through showForm.
class MainWindow : public QMainWindow, public FormHost {
    Q_OBJECT
public:
    explicit MainWindow(Console& console, QWidget* parent = nullptr);
    ~MainWindow() override;

    Console& console() { return console_; }

    // A modeless window becomes a child of the frame, a modal one a dialog over it;
    // either way it is centred horizontally on the frame and 100 twips from its top.
    // The main window takes ownership of `form`.
    void showForm(QWidget* form, bool modal) override;
    // Tests show modal windows without waiting for them to close.
    void setModalShowsBlock(bool block) { modalShowsBlock_ = block; }

    // The end of loading: first background picture, main timer on.
    void finishLoading();
    // "Tarvo QRB [User : name Type : type ]" from the current operator.
    void updateCaption();

    // One tick of MainTmr: the status panels.
    void mainTimerTick();
    // One tick of bgtimer: the next background picture.
    void backgroundTimerTick();
    int backgroundIndex() const;

    // The PC number of the selected terminal list item, 0 when none is selected.
    int selectedPc() const;
    QString panelText(StatusPanel panel) const;
    QAction* action(const QString& name) const { return actions_.value(name); }

    // The message window, opened or brought forward. Unless `activate`, the keyboard
    // stays where it is: new terminal messages and notices show it that way.
    void showMessages(bool activate);
    // The notices of these boxes are read in the message window from now on, beside
    // what terminals said.
    void readNoticesOf(WidgetPrompts& prompts);

Q_SIGNALS:
    // The operator confirmed "Close Application?": the program ends now.
    void applicationClosing();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildActions();
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void buildTerminalList();
    QMenu* buildMenu(QMenu* menu, const char* name, const QString& title,
                     const std::vector<const char*>& items);
    void showPopupAt(const QPoint& globalPos);
    void fillWindowMenu();
    // A child window of the frame, placed by the ShowForm rule; activated or not.
    QMdiSubWindow* placeChild(QWidget* form, bool activate);
    // Something new to read: the message window comes up once the handler that found it
    // has returned, however many came meanwhile.
    void messagesArrived();
    // A terminal's "Loa": the log-on dialog for its PC, opened once the socket's handler
    // has returned (the dialog is modal).
    void logOnRequested(int pc);

    Console& console_;
    BackdropArea* area_ = nullptr;
    QListView* terminalList_ = nullptr;
    QMenu* popup_ = nullptr;
    QMenu* windowMenu_ = nullptr;
    QTimer* mainTimer_ = nullptr;
    QTimer* backgroundTimer_ = nullptr;
    QHash<QString, QAction*> actions_;
    std::array<QLabel*, StatusPanelCount> panels_{};
    bool modalShowsBlock_ = true;
    bool ticking_ = false;
    QPointer<MessageWindow> messages_;
    QPointer<QAbstractItemModel> notices_;
    bool messagesDue_ = false;
    qint32 messagesAt_ = 0; // up-time counter when the window was last shown for a message
    bool logOnDue_ = false;
    int logOnPc_ = 0;
};
