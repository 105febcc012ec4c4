#pragma once

#include "base/app_folder.h"
#include "base/clock.h"
#include "base/current_operator.h"
#include "base/prompts.h"
#include "billing/active_board.h"
#include "billing/billing_log.h"
#include "billing/rates.h"
#include "billing/settlement.h"
#include "server/message_log.h"
#include "server/session_log.h"
#include "server/session_parts.h"
#include "server/snapshot_receiver.h"
#include "server/status_panels.h"
#include "server/terminal_control.h"
#include "server/terminal_list_model.h"
#include "server/terminal_messages.h"
#include "server/terminal_server.h"
#include "server/terminal_table.h"
#include "server/time_limit_slots.h"
#include "store/database.h"
#include "store/terminal_registry.h"

#include <QObject>
#include <QString>
#include <QStringList>

// The composition root: owns everything the console shares (terminal table, registry,
// terminal server, rates, current operator, board, message log, database) and holds the
// clock, the prompts and the data folder it was given. No globals; only windows and
// start-up see this object, every rule takes just the parts it uses.
class Console : public QObject {
    Q_OBJECT
public:
    Console(Clock& clock, Prompts& prompts, const AppFolder& folder, QObject* parent = nullptr);
    ~Console() override;

    Clock& clock() { return clock_; }
    Prompts& prompts() { return prompts_; }
    const AppFolder& folder() const { return folder_; }
    const Database& database() const { return database_; }
    MessageLog& messageLog() { return messageLog_; }
    StatusPanels& statusPanels() { return statusPanels_; }
    TerminalTable& terminals() { return terminals_; }
    TerminalListModel& terminalList() { return terminalList_; }
    SessionLog& sessionLog() { return sessionLog_; }
    TerminalRegistry& registry() { return registry_; }
    TerminalServer& server() { return server_; }
    TerminalControl& control() { return control_; }
    TimeLimitSlots& timeLimits() { return timeLimits_; }
    ActiveBoard& board() { return board_; }
    Rates& rates() { return rates_; }
    CurrentOperator& currentOperator() { return operator_; }
    TerminalMessages& terminalMessages() { return terminalMessages_; }
    SnapshotReceiver& snapshots() { return snapshots_; }
    const SessionParts& sessionParts() const { return parts_; }
    const BillingParts& billingParts() const { return billingParts_; }
    BillingLog& billingLog() { return billingLog_; }

    int nofpc() const { return nofpc_; }
    QString reportConnection() const { return reportConnection_; }

    // Before the log-in: the database is checked (created when missing), the settings
    // file read (created when missing) and the promos loaded. Throws StoreError or
    // SettingsError; nothing is overwritten on failure.
    void openStorage();

    // What start-up found that the operator must be told.
    struct StartupReport {
        int restored = 0;
        QStringList problems;
    };
    // The main window's loading after the instance check: report data source, terminal
    // table, services and rates, restore, every terminal off line, and the terminal
    // server listening on `port` (0 picks a free one). Throws StoreError.
    StartupReport startUp(quint16 port, const QString& odbcIniPath);

private:
    Clock& clock_;
    Prompts& prompts_;
    AppFolder folder_;
    Database database_;
    MessageLog messageLog_;
    StatusPanels statusPanels_;
    TerminalTable terminals_;
    TerminalListModel terminalList_;
    SessionLog sessionLog_;
    TerminalRegistry registry_;
    TerminalServer server_;
    TerminalControl control_;
    TimeLimitSlots timeLimits_;
    ActiveBoard board_;
    Rates rates_;
    CurrentOperator operator_;
    SessionParts parts_;
    TerminalMessages terminalMessages_;
    SnapshotReceiver snapshots_;
    BillingLog billingLog_;
    BillingParts billingParts_;
    int nofpc_ = 24;
    QString reportConnection_;
};
