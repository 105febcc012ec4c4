#include "console/console.h"

#include "people/member_check.h"
#include "store/report_source.h"
#include "store/settings_file.h"

Console::Console(Clock& clock, Prompts& prompts, const AppFolder& folder, QObject* parent)
    : QObject(parent), clock_(clock), prompts_(prompts), folder_(folder), database_(folder_),
      terminalList_(terminals_), sessionLog_(database_, clock_), registry_(database_),
      server_(messageLog_, statusPanels_), control_(server_, registry_),
      board_(timeLimits_), parts_{terminals_,  sessionLog_, control_, timeLimits_,
                                  messageLog_, prompts_,    clock_},
      terminalMessages_(server_, registry_, parts_, folder_),
      snapshots_(server_, control_, registry_, terminals_, messageLog_, folder_, clock_),
      billingLog_(folder_), billingParts_{parts_, database_, board_, rates_, billingLog_} {
    terminals_.init(nofpc_);
    terminalMessages_.setMemberCheck([this](const QString& id, const QString& name) {
        return checkMemberLogIn(database_, id, name);
    });
    sessionLog_.setWriteFailureHandler([this](const QString& reason) {
        const QString text =
            QStringLiteral("The database %1 cannot be written: %2\nSessions go on; what could not "
                           "be saved is saved as soon as the database takes writes again.")
                .arg(database_.path(), reason);
        messageLog_.logMessage(QStringLiteral("DB ERR: ") + text);
        prompts_.notice(text, QStringLiteral("Database error"), Prompts::Icon::Critical);
    });
    connect(&server_, &TerminalServer::unidentifiedShed, this, [this](int count) {
        prompts_.notice(QStringLiteral("%1 connections that had not said which PC they are were "
                                       "closed to make room for the terminals. A program on the "
                                       "network may be flooding the console.")
                            .arg(count),
                        QStringLiteral("Connections"), Prompts::Icon::Exclamation);
    });
    connect(&rates_, &Rates::changed, this, [this] {
        terminalMessages_.setRates(rates_.ratePerHour(), rates_.minimumMinutes(),
                                   rates_.minimumAmount());
    });
}

Console::~Console() = default;

void Console::openStorage() {
    database_.prepare();
    nofpc_ = SettingsFile::loadNofpc(folder_);
    rates_.loadPromos(database_);
}

Console::StartupReport Console::startUp(quint16 port, const QString& odbcIniPath) {
    StartupReport report;
    QString odbcError;
    if (!ReportSource::registerReportDataSource(folder_, odbcIniPath, &odbcError))
        report.problems << QStringLiteral("The report data source could not be written to %1: %2")
                               .arg(odbcIniPath, odbcError);
    reportConnection_ = ReportSource::setReportConnection(folder_);

    terminals_.init(nofpc_);
    board_.setTerminalCount(nofpc_);
    server_.setUnidentifiedLimit(4 * nofpc_ + 64);
    rates_.resetDefaults();
    rates_.loadServices(database_);
    if (!rates_.loadRates(database_))
        prompts_.message(QStringLiteral("Table is empty"));

    const auto restored = sessionLog_.restoreSessions(terminals_);
    report.restored = restored.count;
    report.problems << restored.problems;
    if (!restored.problems.isEmpty())
        report.problems << QStringLiteral("Those sessions are kept in the database as they "
                                          "were. To bring them back, raise the number of "
                                          "terminals (=NOFPC) in %1 and start the console again.")
                               .arg(folder_.file(QStringLiteral("TarvoQRB.INI")));
    if (restored.count > 0)
        statusPanels_.set(StatusPanel::Sessions,
                          QString::number(restored.count) + QStringLiteral(" PC"));

    registry_.markAllOffline();
    if (!server_.startListening(port))
        report.problems << QStringLiteral("The console cannot listen on port %1: %2. Terminals "
                                          "cannot connect until the port is free and the console "
                                          "is started again.")
                               .arg(port)
                               .arg(server_.listenError());
    for (const QString& problem : report.problems)
        messageLog_.logMessage(problem);
    return report;
}
