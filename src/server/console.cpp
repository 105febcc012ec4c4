#include "server/console.h"

#include "server/terminal_server.h"
#include "store/report_source.h"
#include "store/settings_file.h"

namespace {
// The log keeps the newest entries; a terminal sending text without end cannot grow it
// past this.
constexpr qsizetype MessageLogLimit = 1 << 20;
} // namespace

Console::Console(Clock& clock, Prompts& prompts, const AppFolder& folder, QObject* parent)
    : QObject(parent), clock_(clock), prompts_(prompts), folder_(folder), database_(folder_),
      sessionLog_(database_, clock_), server_(std::make_unique<TerminalServer>(*this)) {
    terminals_.InitTerminalTable(nofpc_);
}

Console::~Console() = default;

void Console::openStorage() {
    database_.prepare();
    nofpc_ = SettingsFile::LoadNofpc(folder_);
    rates_.LoadPromos(database_);
}

Console::StartupReport Console::startUp(quint16 port, const QString& odbcIniPath) {
    StartupReport report;
    QString odbcError;
    if (!ReportSource::RegisterReportDataSource(folder_, odbcIniPath, &odbcError))
        report.problems << QStringLiteral("The report data source could not be written to %1: %2")
                               .arg(odbcIniPath, odbcError);
    reportConnection_ = ReportSource::SetReportConnection(folder_);

    terminals_.InitTerminalTable(nofpc_);
    rates_.resetDefaults();
    rates_.LoadServices(database_);
    if (!rates_.LoadRates(database_))
        prompts_.message(QStringLiteral("Table is empty"));

    const auto restored = sessionLog_.RestoreSessions(terminals_);
    report.restored = restored.count;
    report.problems << restored.problems;
    if (restored.count > 0)
        setStatus(2, QString::number(restored.count) + QStringLiteral(" PC"));

    server_->markAllOffline();
    if (!server_->StartListening(port))
        report.problems << QStringLiteral("The console cannot listen on port %1: %2. Terminals "
                                          "cannot connect until it is started again.")
                               .arg(port)
                               .arg(server_->listenError());
    return report;
}

void Console::LogMessage(const QString& text) {
    const QString entry = text + QLatin1Char('\r');
    messageLog_.prepend(entry);
    if (messageLog_.size() > MessageLogLimit)
        messageLog_.truncate(MessageLogLimit / 2);
    Q_EMIT messageLogged(entry);
}

void Console::setStatus(int panel, const QString& text) {
    Q_EMIT statusChanged(panel, text);
}
