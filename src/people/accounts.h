#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class Database;
class Prompts;

// The operator accounts as the maintenance grid lists them: the name and the type
// ("Category") of each, in the table's own order. Passwords never reach the grid.
class AccountList : public QAbstractTableModel {
    Q_OBJECT
public:
    AccountList(const Database& database, Prompts& prompts, QObject* parent = nullptr);

    // Reads the accounts again; on failure tells the operator and keeps what it showed.
    bool load();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    int count() const { return int(accounts_.size()); }
    qint64 rowid(int row) const { return accounts_.at(row).rowid; }
    QString user(int row) const { return accounts_.at(row).user; }
    QString category(int row) const { return accounts_.at(row).category; }
    // The row of the account with this rowid, or -1.
    int rowOf(qint64 rowid) const;

private:
    struct Account {
        qint64 rowid = 0;
        QString user;
        QString category;
    };
    const Database& database_;
    Prompts& prompts_;
    QList<Account> accounts_;
};

// Browsing, adding a new account, modifying the current one, and waiting for its
// current password before a modification.
enum class AccountsMode { None, New, Modi, Idle };
// As the window keeps it: "None", "New", "Modi", "idle".
QString modeText(AccountsMode mode);

// What one control of the accounts window allows and shows.
struct ControlState {
    bool enabled = true;
    bool visible = true;
    bool readOnly = false;
    QChar mask;      // what each typed character shows as; none: the text as it is
    QString caption; // a button's
    bool operator==(const ControlState&) const = default;
};

// The controls whose state follows the mode, each by its object name.
struct AccountControls {
    ControlState dbusers, txtuser, txtnuser, txtutype, txtkey, txtconf;
    ControlState cmdnew, cmdmodi, cmdsave, cmddel;
};

// The states that `mode` decides; whatever it leaves open stays as it stands. "idle"
// decides nothing.
void applyModeStates(AccountsMode mode, AccountControls& controls);

// The account types the type box offers.
QStringList accountTypes();

// What the operator typed when pressing Save.
struct AccountEntry {
    QString newName;      // txtnuser
    QString type;         // txtutype
    QString password;     // txtkey
    QString confirmation; // txtconf: the password that is stored
};

// The accounts maintenance: the current account, the mode and the controls' states,
// and what each button and Enter key does. Every message is told from here; the window
// shows the states and the current account, and moves the focus by the outcome.
class AccountsMaintenance {
public:
    static constexpr auto ScrambleKey = "Lanterns";

    enum class SaveResult {
        Saved,
        NothingToSave,   // not adding or modifying: only back to browsing
        Mismatch,        // the two password boxes differ
        NameRefused,     // empty, with an apostrophe, or already used
        PasswordRefused, // empty, or with spaces around it
        Failed,          // the database refused; told
    };

    AccountsMaintenance(const Database& database, Prompts& prompts);

    AccountList& list() { return list_; }
    AccountsMode mode() const { return mode_; }
    const AccountControls& controls() const { return controls_; }
    // The window's 100 ms timer: puts the controls in the states of the mode.
    void tick() { applyModeStates(mode_, controls_); }

    // The grid's current row (-1: none) and what the bound boxes show of it. While a new
    // account is being added there is none.
    void setCurrentRow(int row);
    int currentRow() const { return newPending_ ? -1 : row_; }
    QString currentName() const;
    QString currentType() const;
    QStringList typeChoices() const;
    // The stored password scrambled with ScrambleKey, as the password box shows it.
    QString shownPassword() const { return shown_; }

    // cmdmodi: asks for the current password in the confirmation box. False (told) when
    // there is no account to modify.
    bool beginModify();
    // Enter in txtconf while waiting for it: the typed text must be the stored password,
    // letter case included. Elsewhere Enter there does nothing.
    enum class Confirmation { NotWaiting, Confirmed, Mismatch };
    Confirmation confirmCurrentPassword(const QString& typed);
    // cmdnew: "Add User" begins a new account; "Cancel" or "Abandon" gives it up.
    void toggleNew();
    void beginNew();
    // Gives up the new account and goes back to browsing from the first account.
    void cancelNew();
    // Enter in txtnuser: false (told) when the name cannot be a new account's.
    bool checkNewName(const QString& typed);
    SaveResult save(const AccountEntry& entry);
    // cmddel: asks, and deletes the current account on Yes. True when deleted.
    bool deleteCurrent();
    // On closing, a pending new account is given up only when the mode reads "new", which
    // it never does: the comparison is kept as the console always had it. Nothing of a
    // new account is written before Save, so closing leaves nothing behind either way.
    bool closeCancelsNewRow() const { return modeText(mode_) == QLatin1String("new"); }

private:
    void showRow(int row);
    bool refuseName(const QString& name);
    bool refusePassword(const QString& password);
    SaveResult addAccount(const AccountEntry& entry);
    SaveResult modifyAccount(const AccountEntry& entry);
    SaveResult finishSave(SaveResult result);
    int adminCount() const;
    void warnWhenNoAdminLeft(int adminsBefore);

    const Database& database_;
    Prompts& prompts_;
    AccountList list_;
    AccountsMode mode_ = AccountsMode::None;
    AccountControls controls_;
    int row_ = -1;
    bool newPending_ = false;
    QString shown_;
    std::optional<QString> stored_; // the current account's password, when it could be read
};
