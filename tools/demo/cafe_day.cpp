#include "cafe_day.h"

#include "billing/charge.h"
#include "client_app.h"
#include "console/console.h"
#include "demo_controls.h"
#include "speed_clock.h"
#include "terminal_client.h"
#include "ui/main_window.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <tuple>

namespace {
// The day's customers, members of the register.
const char* const Customers[] = {
    "DELA CRUZ, JUAN", "REYES, ANA",    "SANTOS, MARIA", "GARCIA, JOSE", "BAUTISTA, LIZA",
    "MENDOZA, PAOLO",  "TORRES, KAREN", "RAMOS, MIGUEL", "FLORES, JOY",  "VILLANUEVA, RICO",
    "AQUINO, BEA",     "CASTRO, LEO",   "NAVARRO, IVY",  "DIAZ, MARK",   "LOPEZ, TINA",
    "MORALES, BEN",    "PASCUAL, GINA", "ROXAS, DAN",    "SALAZAR, MAE", "TAN, ERIC",
    "OCAMPO, RAFAEL",  "QUIZON, LARA"};
} // namespace

using namespace DemoControls;

int customerCount() {
    return int(std::size(Customers));
}
QString customerName(int k) {
    return QString::fromLatin1(Customers[k]);
}
QString customerId(int k) {
    return QStringLiteral("ID-%1").arg(k + 1, 5, 10, QLatin1Char('0'));
}

CafeDay::CafeDay(Console& console, MainWindow& frame, SpeedClock& clock, const QString& screenshots)
    : console_(console), frame_(frame), clock_(clock), screenshots_(screenshots) {
    pace_.setInterval(50);
    connect(&pace_, &QTimer::timeout, this, &CafeDay::runDueSteps);
}

CafeDay::~CafeDay() = default;

bool CafeDay::connectTerminals(int count) {
    int expected = 0;
    for (int pc = 1; pc <= count; ++pc) {
        if (std::ranges::find(ClientPcs, pc) != std::end(ClientPcs))
            continue;
        auto t = std::make_unique<TerminalClient>();
        t->setPcNumber(pc);
        countMessages(t.get(), true);
        t->connectToConsole(QStringLiteral("127.0.0.1"), console_.server().port(),
                            QHostAddress(QStringLiteral("127.0.0.%1").arg(pc)));
        terminals_[pc] = std::move(t);
        ++expected;
    }
    waitFor([&] { return accepted_ == expected; }, 10000);
    bool clientsOnLine = true;
    for (int pc : ClientPcs)
        clientsOnLine = startClient(pc) && clientsOnLine;
    // The identifications are read before anyone logs on.
    waitFor([] { return false; }, 500);
    return accepted_ == expected && clientsOnLine;
}

// Warnings and pauses are counted for the check. The bare terminals identify themselves
// when accepted; the clients do that on their own.
void CafeDay::countMessages(TerminalClient* terminal, bool identifies) {
    connect(terminal, &TerminalClient::messageReceived, this,
            [this, terminal, identifies](const QByteArray& m) {
                if (identifies && m == "ACPT") {
                    terminal->identify();
                    ++accepted_;
                }
                totals_.warnings += m.startsWith("WARN") ? 1 : 0;
                totals_.pauses += m.startsWith("PAUS") ? 1 : 0;
            });
}

void CafeDay::at(QTime time, QString what, std::function<void()> step) {
    steps_.push_back({time, std::move(what), std::move(step)});
}

void CafeDay::plan() {
    // Twenty customers come in through the morning, one every few minutes.
    for (int pc = 1; pc <= 20; ++pc)
        at(QTime(10, 0).addSecs(pc * 150), QStringLiteral("PC %1 logs on").arg(pc), [this, pc] {
            logOn(pc, QStringLiteral("ID-%1").arg(pc, 5, 10, QLatin1Char('0')),
                  customerName(pc - 1));
        });
    at(QTime(10, 40), QStringLiteral("PCs 3 and 4 get 30 minutes"), [this] {
        setLimit(3, QStringLiteral("30"));
        setLimit(4, QStringLiteral("30"));
    });
    at(QTime(10, 50), QStringLiteral("PC 6 gets an hour"),
       [this] { setLimit(6, QStringLiteral("60")); });
    at(QTime(11, 0), QStringLiteral("PC 5 paused"), [this] { popupCommand(5, "mnupPause"); });
    at(QTime(11, 30), QStringLiteral("PC 6 extended by 30 minutes"),
       [this] { popupCommand(6, "mnupx30"); });
    at(QTime(11, 40), QStringLiteral("PC 5 resumed"), [this] { popupCommand(5, "mnupRes"); });
    // At the counter: walk-ins and members put on PCs through the log-on dialog, the first
    // two on the PCs whose customers watch the client's meter.
    using S = CustomerSession::Screen;
    at(QTime(10, 55), QStringLiteral("a walk-in put on PC 21 from toolbar button 2"), [this] {
        inStep(21, S::Running, [this] { logOnAtCounter(21, OpenFrom::Toolbar, Find::WalkIn); });
    });
    at(QTime(11, 5), QStringLiteral("%1 put on PC 22 from its pop-up menu").arg(customerName(20)),
       [this] {
           inStep(22, S::Running,
                  [this] { logOnAtCounter(22, OpenFrom::PopupMenu, Find::MemberByName, 20); });
       });
    at(QTime(11, 10), QStringLiteral("PC 21 gets two hours"),
       [this] { setLimit(21, QStringLiteral("120")); });
    at(QTime(11, 20), QStringLiteral("a walk-in put on PC 23 from its board tile"),
       [this] { logOnAtCounter(23, OpenFrom::BoardTile, Find::WalkIn); });
    at(QTime(12, 10), QStringLiteral("a walk-in put on PC 1 from its pop-up menu"),
       [this] { logOnAtCounter(1, OpenFrom::PopupMenu, Find::WalkIn); });
    at(QTime(12, 20), QStringLiteral("PC 22 paused"),
       [this] { inStep(22, S::Paused, [this] { popupCommand(22, "mnupPause"); }); });
    at(QTime(12, 40), QStringLiteral("PC 21 extended by 30 minutes"),
       [this] { popupCommand(21, "mnupx30"); });
    at(QTime(12, 45), QStringLiteral("%1 put on PC 7 from toolbar button 2").arg(customerName(21)),
       [this] { logOnAtCounter(7, OpenFrom::Toolbar, Find::MemberById, 21); });
    at(QTime(12, 50), QStringLiteral("PC 22 resumed"),
       [this] { inStep(22, S::Running, [this] { popupCommand(22, "mnupRes"); }); });
    at(QTime(13, 15), QStringLiteral("PC 21 stopped and billed, its meter read"),
       [this] { billWithMeter(21); });
    at(QTime(14, 15), QStringLiteral("PC 22 stopped and billed, its meter read"),
       [this] { billWithMeter(22); });

    const std::vector<std::pair<QTime, std::vector<int>>> bills = {
        {QTime(12, 0), {1, 2}},           {QTime(12, 30), {7, 8}},
        {QTime(13, 0), {3, 4}},           {QTime(14, 0), {9, 10, 11, 12}},
        {QTime(15, 0), {13, 14, 15, 16}}, {QTime(15, 30), {5, 6, 17, 18, 19, 20, 1, 7, 23}}};
    for (const auto& [time, pcs] : bills)
        for (int pc : pcs)
            at(time, QStringLiteral("PC %1 stopped and billed").arg(pc), [this, pc] { bill(pc); });
    // Services over the counter through the day: catalogue entry, quantity, receipt.
    const std::vector<std::tuple<QTime, int, const char*, const char*>> sales = {
        {QTime(10, 20), 2, "1", "1001"}, {QTime(11, 15), 1, "12", "1002"},
        {QTime(12, 40), 0, "2", "1003"}, {QTime(13, 10), 3, "3", "1004"},
        {QTime(14, 30), 2, "2", "1005"}, {QTime(15, 10), 1, "40", "1006"}};
    for (const auto& sale : sales) {
        const int service = std::get<1>(sale);
        const QString quantity = QString::fromLatin1(std::get<2>(sale));
        const QString receipt = QString::fromLatin1(std::get<3>(sale));
        at(std::get<0>(sale), QStringLiteral("a service sold, receipt %1").arg(receipt),
           [this, service, quantity, receipt] { sellService(service, quantity, receipt); });
    }
    at(QTime(15, 45), QStringLiteral("the day's report printed"), [this] { printDayReport(); });
    at(QTime(11, 45), QStringLiteral("screenshots of the busy café"), [this] {
        photograph(&frame_, QStringLiteral("main_window"));
        photograph(board(), QStringLiteral("active_terminal_view"));
    });
    at(QTime(15, 55), QStringLiteral("screenshot of the day's end"),
       [this] { photograph(&frame_, QStringLiteral("main_window_closing_time")); });
    std::stable_sort(steps_.begin(), steps_.end(),
                     [](const Step& a, const Step& b) { return a.time < b.time; });
}

void CafeDay::start() {
    pace_.start();
}

void CafeDay::runDueSteps() {
    const QTime now = clock_.now().time();
    while (next_ < steps_.size() && steps_[next_].time <= now) {
        const Step& s = steps_[next_++];
        qInfo().noquote() << s.time.toString(QStringLiteral("HH:mm")) << s.what;
        s.run();
    }
    if (next_ == steps_.size()) {
        pace_.stop();
        Q_EMIT finished();
    }
}

void CafeDay::logOn(int pc, const QString& id, const QString& name) {
    terminals_.at(pc)->logIn(QStringLiteral("%1:%2;%3").arg(id, name).arg(pc));
}

QWidget* CafeDay::board() {
    if (QWidget* atv = frame_.findChild<QWidget*>(QStringLiteral("ATV")); atv && atv->isVisible())
        return atv;
    frame_.findChild<QToolButton*>(QStringLiteral("tbar3"))->click();
    return frame_.findChild<QWidget*>(QStringLiteral("ATV"));
}

void CafeDay::setLimit(int pc, const QString& minutes) {
    auto* limit = tileControl<QComboBox>(board(), "cmbTlmt", pc);
    const int index = limit ? limit->findText(minutes) : -1;
    if (index < 0)
        return problem(QStringLiteral("PC %1 has no time limit of %2").arg(pc).arg(minutes));
    limit->setCurrentIndex(index);
    Q_EMIT limit->textActivated(minutes);
}

void CafeDay::popupCommand(int pc, const char* action) {
    auto* list = frame_.findChild<QAbstractItemView*>(QStringLiteral("lstTerminals"));
    list->setCurrentIndex(list->model()->index(pc - 1, 0));
    auto* command = frame_.findChild<QAction*>(QString::fromLatin1(action));
    if (!command)
        return problem(QStringLiteral("no command %1").arg(QString::fromLatin1(action)));
    command->trigger();
}

void CafeDay::bill(int pc, const std::function<void(const QString&)>& beforeSave) {
    auto* stop = tileControl<QPushButton>(board(), "cmdStop", pc);
    if (!stop || !stop->isEnabled())
        return problem(QStringLiteral("PC %1 cannot be stopped").arg(pc));
    stop->click();
    QDialog* bill = shownDialog(&frame_, QStringLiteral("frmBill"));
    if (!bill)
        return problem(QStringLiteral("no bill for PC %1").arg(pc));
    const QString due = bill->findChild<QLineEdit*>(QStringLiteral("txtAmountDue"))->text();
    if (totals_.bills == 0)
        photograph(bill, QStringLiteral("bill"));
    if (beforeSave)
        beforeSave(due);
    bill->findChild<QPushButton*>(QStringLiteral("cmdsave"))->click();
    if (bill->isVisible())
        return problem(QStringLiteral("the bill of PC %1 was not saved").arg(pc));
    totals_.billedCents += qRound64(amountOfText(due) * 100.0);
    ++totals_.bills;
}

void CafeDay::sellService(int service, const QString& quantity, const QString& receipt) {
    frame_.findChild<QAction*>(QStringLiteral("mnuEarn"))->trigger();
    auto* add = frame_.findChild<QPushButton*>(QStringLiteral("Addsrv"));
    if (!add)
        return problem(QStringLiteral("no Addsrv button in today's sales"));
    add->click();
    QDialog* sale = shownDialog(&frame_, QStringLiteral("NewSrv"));
    if (!sale)
        return problem(QStringLiteral("the service sale did not open"));
    sale->findChild<QComboBox*>(QStringLiteral("cmbSrvc"))->setCurrentIndex(service);
    sale->findChild<QLineEdit*>(QStringLiteral("txtor"))->setText(receipt);
    sale->findChild<QLineEdit*>(QStringLiteral("txtQty"))->setText(quantity);
    const QString total = sale->findChild<QLineEdit*>(QStringLiteral("txttamnt"))->text();
    sale->findChild<QPushButton*>(QStringLiteral("cmdsave"))->click();
    if (sale->isVisible())
        return problem(QStringLiteral("the sale of receipt %1 was not saved").arg(receipt));
    totals_.servicesCents += qRound64(amountOfText(total) * 100.0);
    ++totals_.sales;
}

void CafeDay::printDayReport() {
    frame_.findChild<QAction*>(QStringLiteral("mnuSDate"))->trigger();
    auto* dates = frame_.findChild<QWidget*>(QStringLiteral("frmSDates"));
    if (!dates)
        return problem(QStringLiteral("the date report did not open"));
    photograph(dates, QStringLiteral("selective_date_report"));
    // The summary of rentals and services is the report chosen when the window opens.
    dates->findChild<QPushButton*>(QStringLiteral("cmdPrint"))->click();
    auto* report = frame_.findChild<QWidget*>(QStringLiteral("DRSDAll"));
    if (!report)
        return problem(QStringLiteral("the day's report did not open"));
    photograph(report, QStringLiteral("day_report_preview"));
    report->findChild<QPushButton*>(QStringLiteral("cmdPdf"))->click();
    totals_.reportPrinted = true;
}

void CafeDay::photograph(QWidget* w, const QString& name) {
    if (!w)
        return problem(QStringLiteral("nothing to photograph as %1").arg(name));
    const QString path = QDir(screenshots_).filePath(name + QStringLiteral(".png"));
    if (!w->grab().save(path))
        problem(QStringLiteral("cannot write %1").arg(path));
}

void CafeDay::problem(const QString& text) {
    qWarning().noquote() << "PROBLEM:" << text;
    problems_ << text;
}
