#pragma once

#include "people/rights.h"
#include "server/terminal_list.h"

#include <QMainWindow>
#include <QPrinter>

#include <array>
#include <vector>

class Console;
class QAction;
class QLabel;
class QListWidget;
class QMdiArea;
class QMenu;
class QTimer;

// The console's frame: the menus, the toolbar, the terminal list with its pop-up menu,
// the status bar and the two timers. It only shows what the logic holds and calls the
// logic's procedures; every window it opens goes through ShowForm.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    static constexpr int PictureCount = 4;

    explicit MainWindow(Console& console, QWidget* parent = nullptr);
    ~MainWindow() override;

    // The one place a window is shown: a modeless one becomes a child of the frame, a
    // modal one a dialog over it; either way it is centred horizontally on the frame
    // and 100 twips from its top. The main window takes ownership of `form`.
    void ShowForm(QWidget* form, bool modal);
    // Tests show modal windows without waiting for them to close.
    void setModalShowsBlock(bool block) { modalShowsBlock_ = block; }

    // The end of loading: first background picture, main timer on.
    void finishLoading();

    // "Tarvo QRB [User : name Type : type ]" from the current operator.
    void updateCaption();

    // Toolbar button by its 1-based index; any other index does nothing.
    void tbarButtonClick(int index);

    // One tick of MainTmr: the status panels and the terminal list.
    void mainTimerTick();
    // One tick of bgtimer: the next background picture.
    void backgroundTimerTick();
    int backgroundIndex() const { return pictureIndex_; }

    // Brings the terminal list up to date with the terminal table, touching only the
    // items that changed.
    void refreshTerminalList();
    // The PC number of the selected terminal list item, 0 when none is selected.
    int selectedPc() const;

    // A status bar panel by its 1-based number.
    QString panelText(int panel) const;

Q_SIGNALS:
    // The operator confirmed "Close Application?": the program ends now.
    void applicationClosing();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildPopup();
    void buildToolbar();
    void buildStatusBar();
    void buildTerminalList();

    void setPanel(int panel, const QString& text);
    void setBackground(int index);
    void showPopupAt(const QPoint& globalPos);
    void fillWindowMenu();

    // Stands in for a window that a later version brings.
    void notAvailable(const QString& windowName);

    // Commands.
    void openRates(AdminCommand command);
    void openAccounts(AdminCommand command);
    void openPrinterSetup();
    void openManual();
    void openAbout();
    void switchOperator();
    void onPopupCommand(void (*command)(Console&, int));

    QAction* addItem(QMenu* menu, const char* name, const QString& caption);

    Console& console_;
    QMdiArea* mdi_ = nullptr;
    QListWidget* list_ = nullptr;
    QMenu* popup_ = nullptr;
    QAction* popupHead_ = nullptr;
    QMenu* windowMenu_ = nullptr;
    QTimer* mainTimer_ = nullptr;
    QTimer* backgroundTimer_ = nullptr;
    std::array<QLabel*, 10> panels_{};
    std::vector<TerminalListEntry> shownEntries_;
    QPrinter printer_;
    int pictureIndex_ = 0;
    bool modalShowsBlock_ = true;
    bool ticking_ = false;
};
