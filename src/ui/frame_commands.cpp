#include "ui/frame_commands.h"

#include "billing/bill_dialog.h"
#include "billing/board_window.h"
#include "billing/rates_window.h"
#include "console/console.h"
#include "people/ip_table_window.h"
#include "people/listing_window.h"
#include "people/log_in_dialog.h"
#include "people/log_on_dialog.h"
#include "people/members_window.h"
#include "people/peek_window.h"
#include "people/users_window.h"
#include "sales/date_report_window.h"
#include "sales/todays_sales_window.h"
#include "sales/report_window.h"
#include "server/operator_commands.h"
#include "store/backup.h"
#include "ui/about_dialog.h"
#include "ui/main_window.h"
#include "ui/printer_setup_dialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace {
using Admin = AdminCommand;
using Icon = Prompts::Icon;

// The manual lies next to the program.
void openManual(Prompts& prompts) {
    const QString folder = QCoreApplication::applicationDirPath();
    const QString path = folder + QStringLiteral("/tarvoqrbhelp.hlp");
    if (!QFileInfo::exists(path)) {
        prompts.message(QStringLiteral("The manual (tarvoqrbhelp.hlp) is not in %1.").arg(folder),
                        QString(), Icon::Exclamation);
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        prompts.message(
            QStringLiteral("No program on this computer opens the manual %1.").arg(path), QString(),
            Icon::Exclamation);
}

} // namespace

std::vector<FrameCommand> frameCommands(MainWindow& f) {
    Console& c = f.console();
    const SessionParts& parts = c.sessionParts();
    auto onPc = [&f, &parts](void (*command)(const SessionParts&, int)) {
        return [&f, &parts, command] {
            command(parts, f.selectedPc());
        };
    };
    auto extend = [&f, &parts](const char* minutes) {
        return [&f, &parts, minutes] {
            extendPcMinutes(parts, f.selectedPc(), QString::fromLatin1(minutes));
        };
    };
    auto maintainOne = [&f, &parts](Maintenance kind) {
        return [&f, &parts, kind] {
            maintainPc(parts, f.selectedPc(), kind);
        };
    };
    auto maintainEvery = [&parts](Maintenance kind) {
        return [&parts, kind] {
            maintainAll(parts, kind, true);
        };
    };
    const auto none = std::nullopt;
    const auto ipTable = [&f, &c] {
        openIpTable(c, f);
    };
    return {
        // The main menu.
        {"mnuCset", "Clients &Section", "members", none,
         [&f, &c] {
             openMembersRegister(c, f);
         }},
        {"mnuPCTerm", "Terminal Attachment Infos", "registry", none, ipTable},
        {"mnuRateS", "Tarvo System Settings", "rates", Admin::SettingsMenu,
         [&f, &c] {
             openRatesSettings(c, f);
         }},
        {"mnuuser", "System Users for Tarvo", "accounts", Admin::AccountsMenu,
         [&f, &c] {
             openSystemUsers(c, f);
         }},
        {"mnuBkDB",
         "Back-Up Database",
         {},
         none,
         [&c] {
             backupDatabase(c.database(), c.clock().today(), c.prompts(),
                            QStringLiteral("User Back-Up Method"));
         }},
        {"mnuTxtview",
         "Message Archiver",
         {},
         none,
         [&f] {
             f.showMessages(true);
         }},
        {"mnuPrinter", "Tarvo Printer Setup", "printer", none,
         [&f, &c] {
             openPrinterSetup(c, f);
         }},
        {"mnuSwitch",
         "Switch User Log Session",
         {},
         none,
         [&f, &c] {
             openSwitchLog(c, f, &f);
         }},
        {"mnuexit",
         "&Close Tarvo System",
         {},
         none,
         [&f] {
             QApplication::beep();
             f.close();
         }},
        {"mnulogoff", "Log Off All Clients PC", {}, none, maintainEvery(Maintenance::LogOff)},
        {"mnuReboot",
         "Reboot/Restart All Clients PC",
         {},
         none,
         maintainEvery(Maintenance::Reboot)},
        {"mnuShutdown", "Shutdown All Clients PC", {}, none, maintainEvery(Maintenance::ShutDown)},
        {"mnuEarn", "&What we gather today", "sales", none,
         [&f, &c] {
             openTodaysSales(c, f);
         }},
        {"mnuSDate",
         "&Retro Reports",
         {},
         none,
         [&f, &c] {
             openDateReport(c, f);
         }},
        {"mnuClist",
         "Clients we Currently Have",
         {},
         none,
         [&f, &c] {
             ReportRequest members;
             members.kind = ReportKind::Members;
             openReport(c, f, members);
         }},
        {"mnuTinfo", "Terminal Attachment Information ", {}, none, ipTable},
        {"mnumanual",
         "Tarvo Systems Manual",
         {},
         none,
         [&c] {
             openManual(c.prompts());
         }},
        {"mnuAbout",
         "What is Tarvo?",
         {},
         none,
         [&f, &c] {
             openAbout(c, f);
         }},
        // The terminal pop-up menu.
        {"mnuhead",
         "On PC :",
         {},
         none,
         [] {
         }},
        {"mnuplog",
         "Assign this PC to client",
         {},
         none,
         [&f, &c, &parts] {
             const int pc = f.selectedPc();
             if (!mayAssignPc(parts, pc))
                 return;
             const QString number = QString::number(pc);
             openLogOnDialog(
                 c, f,
                 {pc, QStringLiteral("TRM-") + number, QStringLiteral("WALK-IN ON TRM ") + number});
         }},
        {"mnuplock", "Lock Client PC", {}, none, onPc(&lockPc)},
        {"mnupulock", "Unlock Client PC", {}, Admin::TerminalUnlock, onPc(&unlockPc)},
        {"mnupx5", "  5 Minutes", {}, none, extend("5")},
        {"mnupx10", "10 Minutes", {}, none, extend("10")},
        {"mnupx15", "15 Minutes", {}, none, extend("15")},
        {"mnupx20", "20 Minutes", {}, none, extend("20")},
        {"mnupx30", "30 Minutes", {}, none, extend("30")},
        {"mnupx1hr", "  1 Hour", {}, none, extend("60")},
        {"mnupPause", "Pause Client PC", {}, none, onPc(&pausePc)},
        {"mnupRes", "Resume Client PC", {}, none, onPc(&resumePc)},
        {"mnuplogout",
         "Log-Out Client PC",
         {},
         none,
         [&f, &c] {
             openBillFromList(c, f, f.selectedPc());
         }},
        {"mnuTlogoff", "Log Off Client PC", {}, none, maintainOne(Maintenance::LogOff)},
        {"mnutreb", "Reboot CLient PC", {}, none, maintainOne(Maintenance::Reboot)},
        {"mnutshut", "Shutdown Client PC", {}, none, maintainOne(Maintenance::ShutDown)},
        {"mnupeek",
         "Show Client PC Processes",
         {},
         Admin::TerminalPeek,
         [&f, &c, &parts] {
             const int pc = f.selectedPc();
             if (const int socket = socketForPeek(parts, pc); socket >= 0)
                 openPeek(c, f, pc, socket);
         }},
        // Toolbar buttons that no menu item shares.
        {"tbar1", "Terminal Listing", "listing", none,
         [&f, &c] {
             openListing(c, f, c.nofpc());
         }},
        {"tbar2", "Assign a PC to a Client", "logon", none,
         [&f, &c] {
             openLogOnDialog(c, f);
         }},
        {"tbar3", "Active Terminal View", "board", none,
         [&f, &c] {
             openBoard(c, f);
         }},
        {"tbar4", "Tarvo System Settings", "rates", Admin::SettingsButton,
         [&f, &c] {
             openRatesSettings(c, f);
         }},
        {"tbar10", "Close Tarvo System", "close", none,
         [&f] {
             f.close();
         }},
    };
}

const std::vector<FrameMenu>& frameMenus() {
    static const std::vector<FrameMenu> menus = {
        {"mnuSystem",
         QStringLiteral("&Tarvo System   "),
         {"mnuCset", "mnuPCTerm", "mnuRateS", "mnuuser", "mnuBkDB", "mnuTxtview", "-", "mnuPrinter",
          "mnuSwitch", "-", "mnuexit"}},
        {"mnuTrm",
         QStringLiteral("Client PC Maintenance"),
         {"mnulogoff", "mnuReboot", "mnuShutdown"}},
        {"mnuReps",
         QStringLiteral("&Report Generation"),
         {"mnuEarn", "mnuSDate", "mnuClist", "mnuTinfo"}},
        {"mnuWin", QStringLiteral("&Active Sessions "), {}}, // the open windows, when shown
        {"mnuHelp", QStringLiteral("Tarvo Help"), {"mnumanual", "mnuAbout"}},
    };
    return menus;
}

const FrameMenu& framePopup() {
    static const FrameMenu popup = {"mnuPopup",
                                    QStringLiteral("Upop1"),
                                    {"mnuhead", "-", "mnuplog", "mnuplock", "mnupulock",
                                     ">mnupXtnd", "mnupPause", "mnupRes", "mnuplogout", ">mnupMnt",
                                     "mnupeek"}};
    return popup;
}

const std::vector<FrameMenu>& frameSubmenus() {
    static const std::vector<FrameMenu> submenus = {
        {"mnupXtnd",
         QStringLiteral("Extend Client Time"),
         {"mnupx5", "mnupx10", "mnupx15", "mnupx20", "mnupx30", "mnupx1hr"}},
        {"mnupMnt", QStringLiteral("Client PC Maintenance"), {"mnuTlogoff", "mnutreb", "mnutshut"}},
    };
    return submenus;
}

const std::vector<const char*>& frameToolbar() {
    static const std::vector<const char*> buttons = {
        "tbar1",   "tbar2", "tbar3",      "tbar4",     "-", "mnuCset", "mnuuser",
        "mnuEarn", "-",     "mnuPrinter", "mnuPCTerm", "-", "tbar10"};
    return buttons;
}
