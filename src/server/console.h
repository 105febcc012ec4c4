#pragma once

#include "base/app_folder.h"
#include "base/clock.h"
#include "base/prompts.h"
#include "billing/active_board.h"
#include "billing/rates.h"
#include "people/operator_account.h"
#include "server/session_log.h"
#include "server/terminal_table.h"
#include "store/database.h"

#include <QObject>
#include <QString>

#include <memory>

class TerminalServer;

// The composition root: owns everything the console shares (terminal table, rates,
// current operator, active-terminal board, terminal server, database) and holds the
// clock, the prompts and the data folder it was given. No globals: whatever needs the
// shared state is handed this object.
class Console : public QObject {
    Q_OBJECT
public:
    Console(Clock& clock, Prompts& prompts, const AppFolder& folder, QObject* parent = nullptr);
    ~Console() override;

    Clock& clock() { return clock_; }
    Prompts& prompts() { return prompts_; }
    const AppFolder& folder() const { return folder_; }
    const Database& database() const { return database_; }
    TerminalTable& terminals() { return terminals_; }
    SessionLog& sessionLog() { return sessionLog_; }
    Rates& rates() { return rates_; }
    CurrentOperator& currentOperator() { return operator_; }
    ActiveTerminalBoard& board() { return board_; }
    TerminalServer& server() { return *server_; }

    int nofpc() const { return nofpc_; }
    QString reportConnection() const { return reportConnection_; }

    // Before the log-in: the database is checked (created when missing), the settings
    // file read (created when missing) and the promos loaded. Throws StoreError or
    // SettingsError; nothing is overwritten on failure.
    void openStorage();

    // What start-up found, for the operator.
    struct StartupReport {
        int restored = 0;
        QStringList problems;
    };
    // The main window's loading after the instance check: report data source,
    // terminal table, services and rates, restore, every terminal off line, and the
    // terminal server listening on `port` (0 picks a free one). Throws StoreError.
    StartupReport startUp(quint16 port, const QString& odbcIniPath);

    // The terminal message log: newest entry first, each ended by a carriage return.
    void LogMessage(const QString& text);
    const QString& messageLog() const { return messageLog_; }

    // Status panel texts written from logic; the main window shows them.
    void setStatus(int panel, const QString& text);

Q_SIGNALS:
    void statusChanged(int panel, const QString& text);
    void messageLogged(const QString& entry);

private:
    Clock& clock_;
    Prompts& prompts_;
    AppFolder folder_;
    Database database_;
    TerminalTable terminals_;
    SessionLog sessionLog_;
    Rates rates_;
    CurrentOperator operator_;
    ActiveTerminalBoard board_;
    std::unique_ptr<TerminalServer> server_;
    int nofpc_ = 24;
    QString reportConnection_;
    QString messageLog_;
};
