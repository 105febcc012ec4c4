#include "ui/main_window.h"

#include "base/prompts.h"
#include "base/text.h"
#include "people/log_in_dialog.h"
#include "server/console.h"
#include "server/main_timer.h"
#include "server/operator_commands.h"
#include "server/terminal_server.h"
#include "ui/about_dialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QLinearGradient>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPainterPath>
#include <QPrintDialog>
#include <QRadialGradient>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QUrl>

#include <cmath>
#include <functional>

namespace {

using Icon = Prompts::Icon;

// Nothing in the main timer's work depends on its rate (all time is read from the
// up-time counter), and a status bar read by people needs no more than a few updates a
// second; a faster timer would only spend the counter PC's time.
constexpr int MainTimerMs = 250;
constexpr int BackgroundTimerMs = 60000;

// 100 twips: a twip is 1/1440 inch.
int TwipsToPixels(int twips, int dpi) {
    return twips * dpi / 1440;
}

// --- The background pictures -----------------------------------------------------------

void PaintDusk(QPainter& p, const QRectF& r) {
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, QColor(18, 24, 54));
    sky.setColorAt(0.65, QColor(38, 70, 110));
    sky.setColorAt(1, QColor(196, 120, 90));
    p.fillRect(r, sky);
    QRadialGradient sun(QPointF(r.width() * 0.72, r.height() * 0.92), r.height() * 0.35);
    sun.setColorAt(0, QColor(255, 200, 140, 170));
    sun.setColorAt(1, QColor(255, 200, 140, 0));
    p.fillRect(r, sun);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 150));
    for (int i = 0; i < 60; ++i) {
        // A fixed scatter (golden-ratio steps), so the sky is the same at every drawing.
        const double x = std::fmod(i * 0.6180339887, 1.0) * r.width();
        const double y = std::fmod(i * 0.7548776662, 1.0) * 0.55 * r.height();
        p.drawEllipse(QPointF(x, y), 1.2, 1.2);
    }
}

void PaintDawn(QPainter& p, const QRectF& r) {
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, QColor(120, 150, 200));
    sky.setColorAt(0.6, QColor(236, 190, 170));
    sky.setColorAt(1, QColor(250, 226, 190));
    p.fillRect(r, sky);
    // Layered hills.
    const QColor hills[] = {QColor(110, 120, 150, 200), QColor(80, 95, 120, 220),
                            QColor(55, 68, 92, 240)};
    for (int layer = 0; layer < 3; ++layer) {
        QPainterPath path;
        const double base = r.height() * (0.68 + 0.1 * layer);
        path.moveTo(0, r.height());
        path.lineTo(0, base);
        for (int x = 0; x <= int(r.width()); x += 8)
            path.lineTo(x, base - std::sin(x / (90.0 + 40 * layer) + layer) * 22.0);
        path.lineTo(r.width(), r.height());
        p.fillPath(path, hills[layer]);
    }
}

void PaintGrid(QPainter& p, const QRectF& r) {
    p.fillRect(r, QColor(28, 34, 40));
    QRadialGradient glow(r.center(), std::max(r.width(), r.height()) * 0.6);
    glow.setColorAt(0, QColor(40, 110, 120, 160));
    glow.setColorAt(1, QColor(40, 110, 120, 0));
    p.fillRect(r, glow);
    p.setPen(QPen(QColor(255, 255, 255, 18), 1));
    for (int x = 0; x < int(r.width()); x += 32)
        p.drawLine(QPointF(x, 0), QPointF(x, r.height()));
    for (int y = 0; y < int(r.height()); y += 32)
        p.drawLine(QPointF(0, y), QPointF(r.width(), y));
}

void PaintWaves(QPainter& p, const QRectF& r) {
    QLinearGradient sea(r.topLeft(), r.bottomLeft());
    sea.setColorAt(0, QColor(10, 60, 90));
    sea.setColorAt(1, QColor(4, 28, 48));
    p.fillRect(r, sea);
    for (int band = 0; band < 7; ++band) {
        QPainterPath path;
        const double base = r.height() * (0.2 + band * 0.12);
        path.moveTo(0, base);
        for (int x = 0; x <= int(r.width()); x += 6)
            path.lineTo(x, base + std::sin(x / 70.0 + band * 0.9) * 14.0);
        p.setPen(QPen(QColor(120, 200, 220, 30 + band * 8), 2));
        p.drawPath(path);
    }
}

QPixmap PaintPicture(int index, QSize size) {
    QPixmap pix(size.expandedTo(QSize(1, 1)));
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF r(QPointF(0, 0), QSizeF(pix.size()));
    switch (index) {
    case 0:
        PaintDusk(p, r);
        break;
    case 1:
        PaintDawn(p, r);
        break;
    case 2:
        PaintGrid(p, r);
        break;
    default:
        PaintWaves(p, r);
        break;
    }
    QFont f = p.font();
    f.setPointSize(28);
    f.setBold(true);
    p.setFont(f);
    p.setPen(QColor(255, 255, 255, 40));
    p.drawText(r.adjusted(0, 0, -24, -16), Qt::AlignRight | Qt::AlignBottom,
               QStringLiteral("Tarvo QRB"));
    return pix;
}

// The frame's client area, which keeps its picture sized to itself.
class BackdropArea final : public QMdiArea {
public:
    using QMdiArea::QMdiArea;
    void setPicture(int index) {
        picture_ = index;
        repaintPicture();
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QMdiArea::resizeEvent(event);
        repaintPicture();
    }

private:
    void repaintPicture() {
        setBackground(QBrush(PaintPicture(picture_, viewport()->size())));
        viewport()->update();
    }
    int picture_ = 0;
};

// --- Icons -----------------------------------------------------------------------------

QIcon DrawIcon(const std::function<void(QPainter&)>& draw) {
    QPixmap pix(32, 32);
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(40, 50, 70), 2));
    draw(p);
    return QIcon(pix);
}

void DrawPerson(QPainter& p, double x, double y, const QColor& c) {
    p.setBrush(c);
    p.drawEllipse(QPointF(x, y), 5, 5);
    p.drawChord(QRectF(x - 9, y + 6, 18, 18), 0, 180 * 16);
}

void DrawMonitor(QPainter& p) {
    p.setBrush(QColor(120, 170, 220));
    p.drawRoundedRect(QRectF(4, 5, 24, 17), 2, 2);
    p.drawLine(QPointF(16, 22), QPointF(16, 26));
    p.drawLine(QPointF(10, 27), QPointF(22, 27));
}

QIcon ToolIcon(int index) {
    switch (index) {
    case 1: // terminal listing
        return DrawIcon([](QPainter& p) {
            for (int i = 0; i < 4; ++i) {
                p.setBrush(QColor(90, 160, 90));
                p.drawEllipse(QPointF(7, 7 + i * 6.5), 2, 2);
                p.drawLine(QPointF(12, 7 + i * 6.5), QPointF(28, 7 + i * 6.5));
            }
        });
    case 2: // log-on
        return DrawIcon([](QPainter& p) {
            DrawPerson(p, 12, 9, QColor(230, 180, 90));
            p.setPen(QPen(QColor(40, 140, 60), 3));
            p.drawLine(QPointF(24, 16), QPointF(24, 28));
            p.drawLine(QPointF(18, 22), QPointF(30, 22));
        });
    case 3: // active terminal view
        return DrawIcon([](QPainter& p) {
            DrawMonitor(p);
            p.setBrush(Qt::white);
            p.drawEllipse(QPointF(16, 13.5), 5, 5);
            p.drawLine(QPointF(16, 13.5), QPointF(16, 10));
            p.drawLine(QPointF(16, 13.5), QPointF(19, 13.5));
        });
    case 4: // rates
        return DrawIcon([](QPainter& p) {
            p.setBrush(QColor(240, 200, 60));
            p.drawEllipse(QPointF(16, 16), 12, 12);
            QFont f = p.font();
            f.setBold(true);
            f.setPixelSize(15);
            p.setFont(f);
            p.drawText(QRectF(4, 4, 24, 24), Qt::AlignCenter, QStringLiteral("P"));
        });
    case 5: // members
        return DrawIcon([](QPainter& p) {
            DrawPerson(p, 20, 9, QColor(120, 160, 220));
            DrawPerson(p, 11, 12, QColor(230, 180, 90));
        });
    case 6: // operator accounts
        return DrawIcon([](QPainter& p) {
            p.setBrush(QColor(230, 190, 70));
            p.drawEllipse(QPointF(10, 16), 6, 6);
            p.drawLine(QPointF(16, 16), QPointF(29, 16));
            p.drawLine(QPointF(25, 16), QPointF(25, 21));
            p.drawLine(QPointF(29, 16), QPointF(29, 21));
        });
    case 7: // today's sales
        return DrawIcon([](QPainter& p) {
            const int heights[] = {8, 14, 11, 20};
            for (int i = 0; i < 4; ++i) {
                p.setBrush(QColor(80, 150, 200));
                p.drawRect(QRectF(4 + i * 6.5, 28 - heights[i], 5, heights[i]));
            }
        });
    case 8: // printer
        return DrawIcon([](QPainter& p) {
            p.setBrush(Qt::white);
            p.drawRect(QRectF(9, 3, 14, 10));
            p.setBrush(QColor(150, 160, 175));
            p.drawRoundedRect(QRectF(3, 12, 26, 11), 2, 2);
            p.setBrush(Qt::white);
            p.drawRect(QRectF(9, 19, 14, 9));
        });
    case 9: // IP table
        return DrawIcon([](QPainter& p) {
            const QPointF hub(16, 16);
            const QPointF ends[] = {{5, 6}, {27, 6}, {5, 26}, {27, 26}};
            for (const QPointF& e : ends)
                p.drawLine(hub, e);
            p.setBrush(QColor(90, 170, 110));
            for (const QPointF& e : ends)
                p.drawEllipse(e, 3.5, 3.5);
            p.setBrush(QColor(70, 120, 200));
            p.drawEllipse(hub, 5, 5);
        });
    default: // close
        return DrawIcon([](QPainter& p) {
            p.setPen(QPen(QColor(190, 50, 50), 3));
            p.drawArc(QRectF(6, 6, 20, 20), 120 * 16, 300 * 16);
            p.drawLine(QPointF(16, 3), QPointF(16, 15));
        });
    }
}

QIcon StateIcon(TerminalListEntry::State state, bool online) {
    using State = TerminalListEntry::State;
    QColor c;
    switch (state) {
    case State::Locked:
        c = QColor(140, 140, 140);
        break;
    case State::Running:
        c = QColor(50, 170, 70);
        break;
    case State::Paused:
        c = QColor(235, 170, 30);
        break;
    case State::Free:
        c = QColor(60, 130, 220);
        break;
    case State::Billing:
        c = QColor(150, 80, 190);
        break;
    case State::Unknown:
        c = QColor(200, 50, 50);
        break;
    }
    QPixmap pix(16, 16);
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    // On line: a filled disc; off line: only its ring.
    p.setPen(QPen(c.darker(130), 2));
    p.setBrush(online ? QBrush(c) : QBrush(Qt::NoBrush));
    p.drawEllipse(QRectF(2, 2, 12, 12));
    return QIcon(pix);
}

} // namespace

MainWindow::MainWindow(Console& console, QWidget* parent) : QMainWindow(parent), console_(console) {
    setObjectName(QStringLiteral("main"));
    auto* area = new BackdropArea(this);
    area->setObjectName(QStringLiteral("mdiArea"));
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdi_ = area;
    setCentralWidget(mdi_);

    buildMenus();
    buildPopup();
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

    connect(&console_, &Console::statusChanged, this, &MainWindow::setPanel);
    // A terminal asking for the log-on dialog: told without holding up its socket event.
    connect(&console_.server(), &TerminalServer::logOnDialogRequested, this, [this] {
        console_.prompts().notice(QStringLiteral("A terminal asks for the log-on dialog, which is "
                                                 "not available yet in this version."),
                                  QString(), Icon::Information);
    });
    // The listening socket may already be up when the window is made.
    if (!console_.server().localAddress().isEmpty())
        setPanel(7, console_.server().localAddress());

    updateCaption();
    resize(1024, 720);
}

MainWindow::~MainWindow() = default;

QAction* MainWindow::addItem(QMenu* menu, const char* name, const QString& caption) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(QString::fromLatin1(name));
    return a;
}

void MainWindow::buildMenus() {
    QMenuBar* bar = menuBar();

    QMenu* system = bar->addMenu(QStringLiteral("&Tarvo System   "));
    system->setObjectName(QStringLiteral("mnuSystem"));
    connect(addItem(system, "mnuCset", QStringLiteral("Clients &Section")), &QAction::triggered,
            this, [this] { notAvailable(QStringLiteral("The members register")); });
    connect(addItem(system, "mnuPCTerm", QStringLiteral("Terminal Attachment Infos")),
            &QAction::triggered, this, [this] { notAvailable(QStringLiteral("The IP table")); });
    connect(addItem(system, "mnuRateS", QStringLiteral("Tarvo System Settings")),
            &QAction::triggered, this, [this] { openRates(AdminCommand::SettingsMenu); });
    connect(addItem(system, "mnuuser", QStringLiteral("System Users for Tarvo")),
            &QAction::triggered, this, [this] { openAccounts(AdminCommand::AccountsMenu); });
    connect(addItem(system, "mnuBkDB", QStringLiteral("Back-Up Database")), &QAction::triggered,
            this, [this] { notAvailable(QStringLiteral("The database back-up")); });
    connect(addItem(system, "mnuTxtview", QStringLiteral("Message Archiver")), &QAction::triggered,
            this, [this] { notAvailable(QStringLiteral("The message archiver")); });
    connect(addItem(system, "mnuPrinter", QStringLiteral("Tarvo Printer Setup")),
            &QAction::triggered, this, &MainWindow::openPrinterSetup);
    connect(addItem(system, "mnuSwitch", QStringLiteral("Switch User Log Session")),
            &QAction::triggered, this, &MainWindow::switchOperator);
    system->addSeparator();
    connect(addItem(system, "mnuexit", QStringLiteral("&Close Tarvo System")), &QAction::triggered,
            this, [this] {
                QApplication::beep();
                close();
            });

    QMenu* trm = bar->addMenu(QStringLiteral("Client PC Maintenance"));
    trm->setObjectName(QStringLiteral("mnuTrm"));
    const std::pair<const char*, const char*> all[] = {
        {"mnulogoff", "LogOff"}, {"mnuReboot", "Reboot"}, {"mnuShutdown", "ShutDown"}};
    const QString allCaptions[] = {QStringLiteral("Log Off All Clients PC"),
                                   QStringLiteral("Reboot/Restart All Clients PC"),
                                   QStringLiteral("Shutdown All Clients PC")};
    for (int i = 0; i < 3; ++i) {
        const QString kind = QString::fromLatin1(all[i].second);
        connect(addItem(trm, all[i].first, allCaptions[i]), &QAction::triggered, this,
                [this, kind] {
                    MaintainAll(console_, kind, true);
                    refreshTerminalList();
                });
    }

    QMenu* reps = bar->addMenu(QStringLiteral("&Report Generation"));
    reps->setObjectName(QStringLiteral("mnuReps"));
    connect(addItem(reps, "mnuEarn", QStringLiteral("&What we gather today")), &QAction::triggered,
            this, [this] { notAvailable(QStringLiteral("Today's sales")); });
    connect(addItem(reps, "mnuSDate", QStringLiteral("&Retro Reports")), &QAction::triggered, this,
            [this] { notAvailable(QStringLiteral("The date report")); });
    connect(addItem(reps, "mnuClist", QStringLiteral("Clients we Currently Have")),
            &QAction::triggered, this,
            [this] { notAvailable(QStringLiteral("The members list")); });
    connect(addItem(reps, "mnuTinfo", QStringLiteral("Terminal Attachment Information ")),
            &QAction::triggered, this, [this] { notAvailable(QStringLiteral("The IP table")); });

    windowMenu_ = bar->addMenu(QStringLiteral("&Active Sessions "));
    windowMenu_->setObjectName(QStringLiteral("mnuWin"));
    connect(windowMenu_, &QMenu::aboutToShow, this, &MainWindow::fillWindowMenu);

    QMenu* help = bar->addMenu(QStringLiteral("Tarvo Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    connect(addItem(help, "mnumanual", QStringLiteral("Tarvo Systems Manual")), &QAction::triggered,
            this, &MainWindow::openManual);
    connect(addItem(help, "mnuAbout", QStringLiteral("What is Tarvo?")), &QAction::triggered, this,
            &MainWindow::openAbout);
}

void MainWindow::buildPopup() {
    popup_ = new QMenu(QStringLiteral("Upop1"), this);
    popup_->setObjectName(QStringLiteral("mnuPopup"));

    popupHead_ = addItem(popup_, "mnuhead", QStringLiteral("On PC :"));
    QFont bold = popupHead_->font();
    bold.setBold(true);
    popupHead_->setFont(bold);
    popup_->addSeparator();

    connect(addItem(popup_, "mnuplog", QStringLiteral("Assign this PC to client")),
            &QAction::triggered, this, [this] {
                if (MayAssignPc(console_, selectedPc()))
                    notAvailable(QStringLiteral("The log-on dialog"));
            });
    connect(addItem(popup_, "mnuplock", QStringLiteral("Lock Client PC")), &QAction::triggered,
            this, [this] { onPopupCommand(&LockPc); });
    connect(addItem(popup_, "mnupulock", QStringLiteral("Unlock Client PC")), &QAction::triggered,
            this, [this] { onPopupCommand(&UnlockPc); });

    QMenu* extend = popup_->addMenu(QStringLiteral("Extend Client Time"));
    extend->setObjectName(QStringLiteral("mnupXtnd"));
    const std::pair<const char*, int> extensions[] = {{"mnupx5", 5},   {"mnupx10", 10},
                                                      {"mnupx15", 15}, {"mnupx20", 20},
                                                      {"mnupx30", 30}, {"mnupx1hr", 60}};
    const QString extensionCaptions[] = {
        QStringLiteral("  5 Minutes"), QStringLiteral("10 Minutes"), QStringLiteral("15 Minutes"),
        QStringLiteral("20 Minutes"),  QStringLiteral("30 Minutes"), QStringLiteral("  1 Hour")};
    for (int i = 0; i < 6; ++i) {
        const QString minutes = QString::number(extensions[i].second);
        connect(addItem(extend, extensions[i].first, extensionCaptions[i]), &QAction::triggered,
                this, [this, minutes] {
                    ExtendPCmin(console_, selectedPc(), minutes);
                    refreshTerminalList();
                });
    }

    connect(addItem(popup_, "mnupPause", QStringLiteral("Pause Client PC")), &QAction::triggered,
            this, [this] { onPopupCommand(&PausePc); });
    connect(addItem(popup_, "mnupRes", QStringLiteral("Resume Client PC")), &QAction::triggered,
            this, [this] { onPopupCommand(&ResumePc); });
    connect(addItem(popup_, "mnuplogout", QStringLiteral("Log-Out Client PC")), &QAction::triggered,
            this, [this] { notAvailable(QStringLiteral("Billing")); });

    QMenu* maintain = popup_->addMenu(QStringLiteral("Client PC Maintenance"));
    maintain->setObjectName(QStringLiteral("mnupMnt"));
    const std::pair<const char*, const char*> one[] = {
        {"mnuTlogoff", "LogOff"}, {"mnutreb", "Reboot"}, {"mnutshut", "ShutDown"}};
    const QString oneCaptions[] = {QStringLiteral("Log Off Client PC"),
                                   QStringLiteral("Reboot CLient PC"),
                                   QStringLiteral("Shutdown Client PC")};
    for (int i = 0; i < 3; ++i) {
        const QString kind = QString::fromLatin1(one[i].second);
        connect(addItem(maintain, one[i].first, oneCaptions[i]), &QAction::triggered, this,
                [this, kind] {
                    MaintainPc(console_, selectedPc(), kind);
                    refreshTerminalList();
                });
    }

    connect(addItem(popup_, "mnupeek", QStringLiteral("Show Client PC Processes")),
            &QAction::triggered, this, [this] {
                if (PeekSocketOfPc(console_, selectedPc()) >= 0)
                    notAvailable(QStringLiteral("The process viewer"));
            });
}

void MainWindow::buildToolbar() {
    QToolBar* bar = addToolBar(QStringLiteral("Tarvo"));
    bar->setObjectName(QStringLiteral("tbar"));
    bar->setIconSize(QSize(32, 32));
    const QString tips[] = {
        QStringLiteral("Terminal Listing"),          QStringLiteral("Assign a PC to a Client"),
        QStringLiteral("Active Terminal View"),      QStringLiteral("Tarvo System Settings"),
        QStringLiteral("Clients Section"),           QStringLiteral("System Users for Tarvo"),
        QStringLiteral("What we gather today"),      QStringLiteral("Tarvo Printer Setup"),
        QStringLiteral("Terminal Attachment Infos"), QStringLiteral("Close Tarvo System")};
    for (int index = 1; index <= 10; ++index) {
        QAction* a = bar->addAction(ToolIcon(index), tips[index - 1]);
        a->setObjectName(QStringLiteral("tbar%1").arg(index));
        a->setToolTip(tips[index - 1]);
        connect(a, &QAction::triggered, this, [this, index] { tbarButtonClick(index); });
        if (index == 4 || index == 7 || index == 9)
            bar->addSeparator();
    }
}

void MainWindow::buildStatusBar() {
    QStatusBar* bar = statusBar();
    bar->setSizeGripEnabled(true);
    for (int i = 0; i < 10; ++i) {
        auto* label = new QLabel(bar);
        label->setObjectName(QStringLiteral("panel%1").arg(i + 1));
        label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        label->setContentsMargins(4, 0, 4, 0);
        label->setVisible(false); // an empty panel takes no room
        panels_[size_t(i)] = label;
        bar->addWidget(label, i == 9 ? 1 : 0);
    }
}

void MainWindow::buildTerminalList() {
    auto* dock = new QDockWidget(QStringLiteral("Terminals"), this);
    dock->setObjectName(QStringLiteral("dockTerminals"));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    list_ = new QListWidget(dock);
    list_->setObjectName(QStringLiteral("lstTerminals"));
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    // Wide enough for the longest text a PC of this console can have.
    list_->setMinimumWidth(list_->fontMetrics().horizontalAdvance(
                               QStringLiteral("Pc Number 254 is being billed, off line :254")) +
                           list_->iconSize().width() + 48);
    connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        QListWidgetItem* item = list_->itemAt(pos);
        if (!item)
            return;
        list_->setCurrentItem(item);
        showPopupAt(list_->viewport()->mapToGlobal(pos));
    });
    dock->setWidget(list_);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    refreshTerminalList();
}

void MainWindow::refreshTerminalList() {
    TerminalTable& table = console_.terminals();
    const int count = table.count();
    if (int(shownEntries_.size()) != count) {
        // The table was made again (start-up): the list follows it from scratch.
        const int keep = selectedPc();
        list_->clear();
        shownEntries_.assign(size_t(count), TerminalListEntry{});
        for (int pc = 1; pc <= count; ++pc)
            list_->addItem(QString());
        for (auto& e : shownEntries_)
            e.pc = -1; // forces the first fill below
        if (keep >= 1 && keep <= count)
            list_->setCurrentRow(keep - 1);
    }
    for (int pc = 1; pc <= count; ++pc) {
        TerminalListEntry entry = MakeTerminalListEntry(table.at(pc), pc);
        TerminalListEntry& shown = shownEntries_[size_t(pc - 1)];
        if (entry == shown)
            continue;
        QListWidgetItem* item = list_->item(pc - 1);
        item->setText(entry.text);
        if (entry.state != shown.state || entry.online != shown.online || shown.pc < 0)
            item->setIcon(StateIcon(entry.state, entry.online));
        shown = std::move(entry);
    }
}

int MainWindow::selectedPc() const {
    const QListWidgetItem* item = list_->currentItem();
    return item ? NumberAfterColon(item->text()) : 0;
}

void MainWindow::showPopupAt(const QPoint& globalPos) {
    popupHead_->setText(QStringLiteral("On PC :") + QString::number(selectedPc()));
    popup_->popup(globalPos);
}

void MainWindow::onPopupCommand(void (*command)(Console&, int)) {
    command(console_, selectedPc());
    refreshTerminalList();
}

void MainWindow::setPanel(int panel, const QString& text) {
    if (panel < 1 || panel > int(panels_.size()))
        return;
    QLabel* label = panels_[size_t(panel - 1)];
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

QString MainWindow::panelText(int panel) const {
    if (panel < 1 || panel > int(panels_.size()))
        return QString();
    return panels_[size_t(panel - 1)]->text();
}

void MainWindow::updateCaption() {
    const CurrentOperator& op = console_.currentOperator();
    setWindowTitle(QStringLiteral("Tarvo QRB [User : %1 Type : %2 ]")
                       .arg(op.CurrentUserName, op.CurrentUserType));
}

void MainWindow::finishLoading() {
    setBackground(0);
    refreshTerminalList();
    mainTimer_->start();
}

void MainWindow::mainTimerTick() {
    if (ticking_)
        return;
    ticking_ = true;
    MainTmrTick(console_);
    refreshTerminalList();
    ticking_ = false;
}

void MainWindow::backgroundTimerTick() {
    setBackground((pictureIndex_ + 1) % PictureCount);
}

void MainWindow::setBackground(int index) {
    pictureIndex_ = index;
    static_cast<BackdropArea*>(mdi_)->setPicture(index);
}

void MainWindow::fillWindowMenu() {
    windowMenu_->clear();
    const auto windows = mdi_->subWindowList();
    if (windows.isEmpty()) {
        windowMenu_->addAction(QStringLiteral("(no open windows)"))->setEnabled(false);
        return;
    }
    for (QMdiSubWindow* sub : windows) {
        QAction* a = windowMenu_->addAction(sub->windowTitle());
        a->setCheckable(true);
        a->setChecked(sub == mdi_->activeSubWindow());
        connect(a, &QAction::triggered, this, [this, sub] { mdi_->setActiveSubWindow(sub); });
    }
}

void MainWindow::ShowForm(QWidget* form, bool modal) {
    if (!form)
        return;
    if (isMinimized()) {
        console_.prompts().message(
            QStringLiteral("Windows is in minimized state, just select windows menu"));
        form->deleteLater();
        return;
    }
    const int top = TwipsToPixels(100, logicalDpiY());
    if (!modal) {
        QMdiSubWindow* sub = qobject_cast<QMdiSubWindow*>(form->parentWidget());
        if (!sub || sub->mdiArea() != mdi_) {
            sub = mdi_->addSubWindow(form);
            sub->setAttribute(Qt::WA_DeleteOnClose);
        }
        sub->show();
        sub->move((width() - sub->width()) / 2, top);
        mdi_->setActiveSubWindow(sub);
        return;
    }
    // A child window of the frame cannot hold the operator's attention alone, so a
    // modal window is a dialog over the frame, placed by the same rule.
    if (form->parentWidget() != this)
        form->setParent(this, form->windowFlags() | Qt::Dialog);
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

void MainWindow::notAvailable(const QString& windowName) {
    console_.prompts().message(windowName +
                                   QStringLiteral(" is not available yet in this version."),
                               QString(), Icon::Information);
}

void MainWindow::openRates(AdminCommand command) {
    if (AdminOrRefuse(console_, command))
        notAvailable(QStringLiteral("The rates, services and promos window"));
}

void MainWindow::openAccounts(AdminCommand command) {
    if (AdminOrRefuse(console_, command))
        notAvailable(QStringLiteral("The system user maintenance"));
}

void MainWindow::tbarButtonClick(int index) {
    switch (index) {
    case 1:
        notAvailable(QStringLiteral("The terminal listing"));
        break;
    case 2:
        notAvailable(QStringLiteral("The log-on dialog"));
        break;
    case 3:
        notAvailable(QStringLiteral("The active terminal view"));
        break;
    case 4:
        openRates(AdminCommand::SettingsButton);
        break;
    case 5:
        notAvailable(QStringLiteral("The members register"));
        break;
    case 6:
        openAccounts(AdminCommand::AccountsButton);
        break;
    case 7:
        notAvailable(QStringLiteral("Today's sales"));
        break;
    case 8:
        openPrinterSetup();
        break;
    case 9:
        notAvailable(QStringLiteral("The IP table"));
        break;
    case 10:
        close();
        break;
    default:
        break;
    }
}

void MainWindow::openPrinterSetup() {
    auto* dialog = new QPrintDialog(&printer_, this);
    dialog->setObjectName(QStringLiteral("dlgPrinter"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    ShowForm(dialog, true);
}

void MainWindow::openManual() {
    const QString folder = QCoreApplication::applicationDirPath();
    const QString path = folder + QStringLiteral("/tarvoqrbhelp.hlp");
    if (!QFileInfo::exists(path)) {
        console_.prompts().message(
            QStringLiteral("The manual (tarvoqrbhelp.hlp) is not in %1.").arg(folder), QString(),
            Icon::Exclamation);
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        console_.prompts().message(
            QStringLiteral("No program on this computer opens the manual %1.").arg(path), QString(),
            Icon::Exclamation);
}

void MainWindow::openAbout() {
    auto* about = new AboutDialog(console_.folder().path(), this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    ShowForm(about, true);
}

void MainWindow::switchOperator() {
    auto* dialog = new LogInDialog(console_, LogInDialog::Mode::Switch, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &LogInDialog::switched, this,
            [this](const QString& caption) { setWindowTitle(caption); });
    ShowForm(dialog, true);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (console_.prompts().ask(QStringLiteral("Close Application?"), QString(),
                               Prompts::Buttons::OkCancel, Icon::Critical) != Prompts::Answer::Ok) {
        event->ignore();
        return;
    }
    // Ends here and now: no terminal is told and no session is closed, so the open
    // sessions stay in the session log and come back at the next start.
    event->accept();
    Q_EMIT applicationClosing();
}
