#include "ui/main_window.h"

#include "base/text.h"
#include "console/console.h"
#include "people/log_on_dialog.h"
#include "people/message_log_model.h"
#include "people/message_window.h"
#include "server/session_clock.h"
#include "ui/accessibility.h"
#include "ui/backdrop_area.h"
#include "ui/frame_commands.h"
#include "ui/pictures.h"
#include "ui/prompts_dialog.h"
#include "ui/terminal_icon_model.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QListView>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

namespace {

using Icon = Prompts::Icon;

// Nothing in the main timer's work depends on its rate (all time is read from the
// up-time counter), and a status bar read by people needs no more than a few updates a
// second; a faster timer would only spend the counter PC's time.
constexpr int MainTimerMs = 250;
constexpr int BackgroundTimerMs = 60000;
// How long terminals must have said nothing for a new message to bring the message
// window forward again.
constexpr int MessagesQuietMs = 5000;

// 100 twips: a twip is 1/1440 inch.
int twipsToPixels(int twips, int dpi) {
    return twips * dpi / 1440;
}

// The panels in the order the status bar shows them, with their object names.
constexpr std::pair<StatusPanel, const char*> PanelNames[] = {
    {StatusPanel::Sessions, "pnlSessions"},
    {StatusPanel::Sockets, "pnlSockets"},
    {StatusPanel::Port, "pnlPort"},
    {StatusPanel::LocalAddress, "pnlAddress"},
    {StatusPanel::LastRequest, "pnlLastRequest"},
    {StatusPanel::DateTime, "pnlDateTime"},
};

} // namespace

MainWindow::MainWindow(Console& console, QWidget* parent) : QMainWindow(parent), console_(console) {
    setObjectName(QStringLiteral("main"));
    area_ = new BackdropArea(this);
    area_->setObjectName(QStringLiteral("mdiArea"));
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(area_);

    buildActions();
    buildMenus();
    buildToolbar();
    buildStatusBar();
    buildTerminalList();

    mainTimer_ = new QTimer(this);
    mainTimer_->setObjectName(QStringLiteral("MainTmr"));
    mainTimer_->setInterval(MainTimerMs);
    connect(mainTimer_, &QTimer::timeout, this, &MainWindow::mainTimerTick);

    backgroundTimer_ = new QTimer(this);
    backgroundTimer_->setObjectName(QStringLiteral("bgtimer"));
    backgroundTimer_->setInterval(BackgroundTimerMs);
    connect(backgroundTimer_, &QTimer::timeout, this, &MainWindow::backgroundTimerTick);
    backgroundTimer_->start();

    connect(&console_.terminalMessages(), &TerminalMessages::logOnDialogRequested, this,
            &MainWindow::logOnRequested);
    connect(&console_.messageLog(), &MessageLog::entryAdded, this, &MainWindow::messagesArrived);
    makeAccessible(this);
}

MainWindow::~MainWindow() = default;

void MainWindow::buildActions() {
    for (FrameCommand& command : frameCommands(*this)) {
        auto* a = new QAction(command.caption, this);
        a->setObjectName(QString::fromLatin1(command.name));
        if (!command.icon.isEmpty())
            a->setIcon(Pictures::commandIcon(command.icon));
        connect(a, &QAction::triggered, this,
                [this, right = command.right, run = std::move(command.run)] {
                    if (!right ||
                        adminOrRefuse(console_.currentOperator(), console_.prompts(), *right))
                        run();
                });
        actions_.insert(a->objectName(), a);
    }
    QFont bold = action(QStringLiteral("mnuhead"))->font();
    bold.setBold(true);
    action(QStringLiteral("mnuhead"))->setFont(bold);
}

QMenu* MainWindow::buildMenu(QMenu* menu, const char* name, const QString& title,
                             const std::vector<const char*>& items) {
    menu->setObjectName(QString::fromLatin1(name));
    menu->setTitle(title);
    for (const char* item : items) {
        const QString entry = QString::fromLatin1(item);
        if (entry == QLatin1String("-")) {
            menu->addSeparator();
        } else if (entry.startsWith(QLatin1Char('>'))) {
            for (const FrameMenu& sub : frameSubmenus())
                if (entry.mid(1) == QLatin1String(sub.name))
                    buildMenu(menu->addMenu(sub.title), sub.name, sub.title, sub.items);
        } else {
            menu->addAction(action(entry));
        }
    }
    return menu;
}

void MainWindow::buildMenus() {
    menuBar()->setObjectName(QStringLiteral("mnuBar"));
    menuBar()->setAccessibleName(QStringLiteral("Main menu"));
    for (const FrameMenu& m : frameMenus()) {
        QMenu* menu = buildMenu(menuBar()->addMenu(m.title), m.name, m.title, m.items);
        if (menu->objectName() == QLatin1String("mnuWin")) {
            windowMenu_ = menu;
            connect(menu, &QMenu::aboutToShow, this, &MainWindow::fillWindowMenu);
        }
    }
    const FrameMenu& p = framePopup();
    popup_ = buildMenu(new QMenu(this), p.name, p.title, p.items);
    popup_->setAccessibleName(QStringLiteral("Terminal commands")); // its title is never shown
}

void MainWindow::buildToolbar() {
    QToolBar* bar = addToolBar(QStringLiteral("Tarvo"));
    bar->setObjectName(QStringLiteral("tbar"));
    bar->setIconSize(QSize(32, 32));
    int button = 0;
    for (const char* item : frameToolbar()) {
        const QString name = QString::fromLatin1(item);
        if (name == QLatin1String("-")) {
            bar->addSeparator();
            continue;
        }
        QAction* a = action(name);
        bar->addAction(a);
        // The buttons keep the numbers operators know them by.
        bar->widgetForAction(a)->setObjectName(QStringLiteral("tbar%1").arg(++button));
    }
}

void MainWindow::buildStatusBar() {
    QStatusBar* bar = statusBar();
    bar->setSizeGripEnabled(true);
    for (const auto& [panel, name] : PanelNames) {
        auto* label = new QLabel(bar);
        label->setObjectName(QString::fromLatin1(name));
        label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        label->setContentsMargins(4, 0, 4, 0);
        label->setVisible(false); // an empty panel takes no room
        panels_[size_t(panel)] = label;
        bar->addWidget(label, panel == StatusPanel::DateTime ? 1 : 0);
    }
    connect(&console_.statusPanels(), &StatusPanels::changed, this,
            [this](StatusPanel panel, const QString& text) {
                QLabel* label = panels_[size_t(panel)];
                label->setText(text);
                label->setVisible(!text.isEmpty());
            });
    for (const auto& [panel, name] : PanelNames)
        Q_EMIT console_.statusPanels().changed(panel, console_.statusPanels().text(panel));
}

void MainWindow::buildTerminalList() {
    auto* dock = new QDockWidget(QStringLiteral("Terminals"), this);
    dock->setObjectName(QStringLiteral("dockTerminals"));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    terminalList_ = new QListView(dock);
    terminalList_->setObjectName(QStringLiteral("lstTerminals"));
    terminalList_->setAccessibleName(dock->windowTitle());
    auto* icons = new TerminalIconModel(terminalList_);
    icons->setSourceModel(&console_.terminalList());
    terminalList_->setModel(icons);
    terminalList_->setSelectionMode(QAbstractItemView::SingleSelection);
    terminalList_->setUniformItemSizes(true);
    terminalList_->setContextMenuPolicy(Qt::CustomContextMenu);
    // Wide enough for the longest text a PC of this console can have.
    terminalList_->setMinimumWidth(terminalList_->fontMetrics().horizontalAdvance(QStringLiteral(
                                       "Pc Number 254 is being billed, off line :254")) +
                                   terminalList_->iconSize().width() + 48);
    connect(terminalList_, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        const QModelIndex index = terminalList_->indexAt(pos);
        if (!index.isValid())
            return;
        terminalList_->setCurrentIndex(index);
        showPopupAt(terminalList_->viewport()->mapToGlobal(pos));
    });
    dock->setWidget(terminalList_);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    // Qt describes the dock's own buttons again whenever the dock floats or docks.
    connect(dock, &QDockWidget::topLevelChanged, dock, [dock] { makeAccessible(dock); });
}

int MainWindow::selectedPc() const {
    const QModelIndex index = terminalList_->currentIndex();
    return index.isValid() ? numberAfterColon(index.data().toString()) : 0;
}

void MainWindow::showPopupAt(const QPoint& globalPos) {
    action(QStringLiteral("mnuhead"))
        ->setText(QStringLiteral("On PC :") + QString::number(selectedPc()));
    popup_->popup(globalPos);
}

QString MainWindow::panelText(StatusPanel panel) const {
    return panels_[size_t(panel)]->text();
}

void MainWindow::updateCaption() {
    const CurrentOperator& op = console_.currentOperator();
    setWindowTitle(QStringLiteral("Tarvo QRB [User : %1 Type : %2 ]").arg(op.name, op.type));
}

void MainWindow::finishLoading() {
    area_->setPicture(0);
    mainTimer_->start();
}

void MainWindow::mainTimerTick() {
    if (ticking_)
        return;
    ticking_ = true;
    ::mainTimerTick(console_.terminals(), console_.server(), console_.statusPanels(),
                    console_.clock());
    // The board's amounts stay current even when its window was never opened: a bill
    // from the terminal list reads them.
    try {
        console_.board().refresh(console_.terminals(), console_.rates(),
                                 console_.clock().tickCount());
    } catch (const TickOverflow&) {
    }
    ticking_ = false;
}

void MainWindow::backgroundTimerTick() {
    area_->setPicture((area_->picture() + 1) % Pictures::BackgroundCount);
}

int MainWindow::backgroundIndex() const {
    return area_->picture();
}

void MainWindow::fillWindowMenu() {
    windowMenu_->clear();
    const auto windows = area_->subWindowList();
    if (windows.isEmpty()) {
        QAction* none = windowMenu_->addAction(QStringLiteral("(no open windows)"));
        none->setObjectName(QStringLiteral("mnuWinNone"));
        none->setEnabled(false);
        return;
    }
    for (QMdiSubWindow* sub : windows) {
        QAction* a = windowMenu_->addAction(sub->windowTitle());
        a->setObjectName(sub->widget() ? sub->widget()->objectName() : sub->objectName());
        a->setCheckable(true);
        a->setChecked(sub == area_->activeSubWindow());
        connect(a, &QAction::triggered, this, [this, sub] { area_->setActiveSubWindow(sub); });
    }
}

QMdiSubWindow* MainWindow::placeChild(QWidget* form, bool activate) {
    QMdiSubWindow* active = area_->activeSubWindow();
    const QPointer<QWidget> focused = QApplication::focusWidget();
    QMdiSubWindow* sub = qobject_cast<QMdiSubWindow*>(form->parentWidget());
    // A child window closed a moment ago is still its frame's until the frame is
    // deleted: the form moves to a new frame rather than go down with the old one.
    if (!sub || sub->mdiArea() != area_ || !area_->subWindowList().contains(sub)) {
        sub = area_->addSubWindow(form);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        form->show(); // a form taken from another frame was hidden on the way
    }
    makeAccessible(sub);
    sub->show();
    // Centred on the frame, but not past the right edge of the window area, where
    // the list beside it leaves the area narrower than the frame.
    const int right = qMax(0, area_->viewport()->width() - sub->width());
    sub->move(qMin((width() - sub->width()) / 2, right), twipsToPixels(100, logicalDpiY()));
    if (activate) {
        area_->setActiveSubWindow(sub);
        return sub;
    }
    // Shown without taking the keyboard: the window and the control that had it keep it.
    if (active != sub)
        area_->setActiveSubWindow(active);
    if (focused && focused->window() == this && QApplication::focusWidget() != focused)
        focused->setFocus(Qt::OtherFocusReason);
    return sub;
}

void MainWindow::showForm(QWidget* form, bool modal) {
    if (!form)
        return;
    if (isMinimized()) {
        console_.prompts().message(
            QStringLiteral("Windows is in minimized state, just select windows menu"));
        form->deleteLater();
        return;
    }
    if (!modal) {
        placeChild(form, true);
        return;
    }
    const int top = twipsToPixels(100, logicalDpiY());
    // A child window of the frame cannot hold the operator's attention alone, so a
    // modal window is a dialog over the frame, placed by the same rule.
    if (form->parentWidget() != this)
        form->setParent(this, form->windowFlags() | Qt::Dialog);
    makeAccessible(form);
    if (!form->testAttribute(Qt::WA_Resized))
        form->adjustSize();
    form->move(frameGeometry().x() + (frameGeometry().width() - form->width()) / 2,
               frameGeometry().y() + top);
    form->setWindowModality(Qt::ApplicationModal);
    auto* dialog = qobject_cast<QDialog*>(form);
    if (dialog && modalShowsBlock_)
        dialog->exec();
    else
        form->show();
}

void MainWindow::messagesArrived() {
    if (messagesDue_)
        return;
    messagesDue_ = true;
    QTimer::singleShot(0, this, [this] {
        messagesDue_ = false;
        showMessages(false);
    });
}

void MainWindow::logOnRequested(int pc) {
    // A terminal repeating "Loa" costs one look for the open dialog per pass of the
    // event loop, however many came; the latest PC is the one asked for.
    logOnPc_ = pc;
    if (logOnDue_)
        return;
    logOnDue_ = true;
    QTimer::singleShot(0, this, [this] {
        logOnDue_ = false;
        openLogOnDialogForTerminal(console_, *this, logOnPc_);
    });
}

void MainWindow::showMessages(bool activate) {
    if (!messages_)
        messages_ = new MessageWindow(console_, notices_);
    if (activate) {
        showForm(messages_, false);
        return;
    }
    auto* sub = qobject_cast<QMdiSubWindow*>(messages_->parentWidget());
    const bool shown = sub && sub->isVisible();
    // The window comes forward when terminals start talking after a quiet spell; while
    // they go on (a flood, say) it stays where the operator put it.
    const qint32 now = console_.clock().tickCount();
    const bool quiet = quint32(now) - quint32(messagesAt_) >= quint32(MessagesQuietMs);
    messagesAt_ = now;
    if (!shown)
        placeChild(messages_, false);
    else if (quiet)
        sub->raise();
}

void MainWindow::readNoticesOf(WidgetPrompts& prompts) {
    static_assert(int(WidgetPrompts::FullTextRole) == int(MessageLogModel::FullTextRole),
                  "the message window reads both lists' lines whole the same way");
    notices_ = &prompts.notices();
    prompts.setNoticeReader(this);
    connect(notices_, &QAbstractItemModel::rowsInserted, this, &MainWindow::messagesArrived);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (console_.prompts().ask(QStringLiteral("Close Application?"), QString(),
                               Prompts::Buttons::OkCancel, Icon::Critical) != Prompts::Answer::Ok) {
        event->ignore();
        return;
    }
    // A child window that refuses to close (the active terminal view, while a session is
    // open) keeps the console open too.
    for (QMdiSubWindow* sub : area_->subWindowList())
        if (!sub->close()) {
            event->ignore();
            return;
        }
    // Ends here and now: no terminal is told and no session is closed, so the open
    // sessions stay in the session log and come back at the next start.
    event->accept();
    Q_EMIT applicationClosing();
}
