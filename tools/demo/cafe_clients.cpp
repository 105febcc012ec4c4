// The two PCs that run the terminal client itself: its lock screen and meter, on the
// café's clock, over their own connections to the console.
#include "billing/board_window.h"
#include "billing/charge.h"
#include "cafe_day.h"
#include "client_app.h"
#include "console/console.h"
#include "demo_controls.h"
#include "meter_window.h"
#include "speed_clock.h"

#include <QLabel>

using namespace DemoControls;

bool CafeDay::MeterReading::matches() const {
    return meter.startsWith(QStringLiteral("P ")) &&
           qRound64(amountOfText(meter.mid(2)) * 100.0) == qRound64(amountOfText(due) * 100.0);
}

bool CafeDay::startClient(int pc) {
    ClientSettings s;
    s.consoleAddress = QStringLiteral("127.0.0.1");
    s.port = console_.server().port();
    s.pc = pc;
    s.localAddress = QHostAddress(QStringLiteral("127.0.0.%1").arg(pc));
    s.cafeName = QStringLiteral("Tarvo Demo Café");
    s.stateFile.clear(); // a demo leaves nothing behind in the session's runtime folder
    auto client = std::make_unique<ClientApp>(s, clock_);
    countMessages(&client->terminal(), false);
    client->start();
    ClientApp* c = client.get();
    clients_[pc] = std::move(client);
    if (!waitFor([c] { return c->link().isOnline() && c->session().hasRates(); }, 10000)) {
        problem(QStringLiteral("the client of PC %1 did not come on line").arg(pc));
        return false;
    }
    return true;
}

void CafeDay::inStep(int pc, CustomerSession::Screen screen, const std::function<void()>& step) {
    // The console notes the time when it sends, the client when it hears: on a clock that
    // runs sixty times faster, the moments between would show on the meter.
    clock_.hold();
    step();
    ClientApp& client = *clients_.at(pc);
    if (!waitFor([&client, screen] { return client.session().screen() == screen; }, 5000))
        problem(QStringLiteral("the client of PC %1 did not follow the console").arg(pc));
    clock_.release();
}

void CafeDay::billWithMeter(int pc) {
    QWidget& meter = clients_.at(pc)->meterWindow();
    clock_.hold();
    // The board's amount, which the bill takes, and the meter each refresh on their own
    // timer: both have shown the held instant after two of their ticks.
    waitFor([] { return false; }, 2 * std::max(BoardWindow::TickMs, ClientApp::MeterTickMs) + 200);
    if (meter.objectName() != QLatin1String("frmMeter") || !meter.isVisible()) {
        clock_.release();
        return problem(QStringLiteral("the meter of PC %1 is not showing").arg(pc));
    }
    bill(pc, [this, pc, &meter](const QString& due) {
        auto* amount = meter.findChild<QLabel*>(QStringLiteral("lblAmount"));
        totals_.meters.push_back({pc, amount ? amount->text() : QString(), due});
    });
    clock_.release();
}
