// Customers put on PCs at the counter, through the log-on dialog: walk-ins as the dialog
// names them, members found with its search buttons.
#include "cafe_day.h"
#include "console/console.h"
#include "demo_controls.h"
#include "ui/main_window.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>

using namespace DemoControls;

void CafeDay::logOnAtCounter(int pc, OpenFrom from, Find find, int member) {
    switch (from) {
    case OpenFrom::Toolbar:
        frame_.findChild<QToolButton*>(QStringLiteral("tbar2"))->click();
        break;
    case OpenFrom::PopupMenu:
        popupCommand(pc, "mnuplog");
        break;
    case OpenFrom::BoardTile:
        if (auto* number = tileControl<QPushButton>(board(), "lblTrmNo", pc))
            number->click();
        break;
    }
    QDialog* logmem = shownDialog(&frame_, QStringLiteral("logmem"));
    if (!logmem)
        return problem(QStringLiteral("the log-on dialog did not open for PC %1").arg(pc));
    // Opened from the toolbar it names no PC; from the PC's menu or tile it names that one.
    if (from == OpenFrom::Toolbar && !pickTerminal(logmem, pc))
        return;
    if (find != Find::WalkIn && !passMember(logmem, find, member))
        return;
    const QString id = logmem->findChild<QLineEdit*>(QStringLiteral("txtid"))->text();
    const QString expected =
        find == Find::WalkIn ? QStringLiteral("TRM-%1").arg(pc) : customerId(member);
    if (id != expected)
        problem(QStringLiteral("the log-on dialog put %1 on PC %2, not %3")
                    .arg(id)
                    .arg(pc)
                    .arg(expected));
    logmem->findChild<QPushButton*>(QStringLiteral("cmdLogM"))->click();
    if (logmem->isVisible()) {
        logmem->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        return problem(QStringLiteral("the log-on dialog refused PC %1").arg(pc));
    }
    const TerminalRecord& r = console_.terminals().at(pc);
    if (!r.logged || r.cid != id)
        return problem(QStringLiteral("PC %1 has no session for %2").arg(pc).arg(id));
    ++totals_.counterLogOns;
}

bool CafeDay::pickTerminal(QDialog* logmem, int pc) {
    auto* number = logmem->findChild<QComboBox*>(QStringLiteral("cmbNum"));
    pickFromList(number, pc - 1);
    if (number->currentText() == QString::number(pc))
        return true;
    problem(QStringLiteral("PC %1 could not be picked in the log-on dialog").arg(pc));
    logmem->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
    return false;
}

bool CafeDay::passMember(QDialog* logmem, Find find, int member) {
    const bool byName = find == Find::MemberByName;
    logmem->findChild<QToolButton*>(byName ? QStringLiteral("imgName") : QStringLiteral("imgID"))
        ->click();
    QDialog* search = shownDialog(&frame_, QStringLiteral("Gsearch"));
    if (!search) {
        problem(QStringLiteral("the member search did not open"));
        logmem->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        return false;
    }
    if (byName)
        for (auto* option : search->findChildren<QRadioButton*>(QStringLiteral("optwhat")))
            if (option->property("index").toInt() == 1)
                option->click();
    // By name the search reads the last name first, as it is written in the register.
    const QString key =
        byName ? customerName(member).section(QLatin1Char(','), 0, 0) : customerId(member);
    typeKeys(search->findChild<QLineEdit*>(QStringLiteral("txtskey")), key);
    search->findChild<QPushButton*>(QStringLiteral("cmdpassd"))->click();
    if (search->isVisible()) {
        search->findChild<QPushButton*>(QStringLiteral("cmdclose"))->click();
        problem(QStringLiteral("the member search found no %1").arg(key));
        logmem->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        return false;
    }
    return true;
}
