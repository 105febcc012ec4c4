#include "people/accounts.h"

#include "base/prompts.h"
#include "people/scramble.h"
#include "store/database.h"

namespace {

using Icon = Prompts::Icon;

const QString AddUser = QStringLiteral("Add User");
const QString Admin = QStringLiteral("Admin");

void tellFailure(Prompts& prompts, const QString& failed, const StoreError& error) {
    prompts.message(QStringLiteral("%1: %2\nNothing was changed.").arg(failed, error.text()),
                    QStringLiteral("Database error"), Icon::Critical);
}

} // namespace

AccountList::AccountList(const Database& database, Prompts& prompts, QObject* parent)
    : QAbstractTableModel(parent), database_(database), prompts_(prompts) {}

bool AccountList::load() {
    QList<Account> read;
    try {
        DbSession s(database_);
        auto q =
            s.run(QStringLiteral("SELECT rowid, \"user\", utype FROM sysusers ORDER BY rowid"));
        while (q.next())
            read << Account{q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString()};
    } catch (const StoreError& e) {
        tellFailure(prompts_, QStringLiteral("The accounts could not be read"), e);
        return false;
    }
    beginResetModel();
    accounts_ = read;
    endResetModel();
    return true;
}

int AccountList::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

int AccountList::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 2;
}

QVariant AccountList::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole || index.row() >= count())
        return {};
    const Account& a = accounts_.at(index.row());
    return index.column() == 0 ? a.user : a.category;
}

QVariant AccountList::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return section == 0 ? QStringLiteral("User") : QStringLiteral("Category");
}

int AccountList::rowOf(qint64 rowid) const {
    for (int row = 0; row < count(); ++row)
        if (accounts_.at(row).rowid == rowid)
            return row;
    return -1;
}

QString modeText(AccountsMode mode) {
    switch (mode) {
    case AccountsMode::None:
        return QStringLiteral("None");
    case AccountsMode::New:
        return QStringLiteral("New");
    case AccountsMode::Modi:
        return QStringLiteral("Modi");
    case AccountsMode::Idle:
        return QStringLiteral("idle");
    }
    return {};
}

void applyModeStates(AccountsMode mode, AccountControls& c) {
    switch (mode) {
    case AccountsMode::None:
        c.txtconf.enabled = false;
        c.txtuser.readOnly = true;
        c.txtuser.visible = true;
        c.txtnuser.visible = false;
        c.txtutype.readOnly = true;
        c.txtkey.readOnly = true;
        c.txtkey.mask = QChar();
        c.cmdsave.enabled = false;
        c.cmddel.enabled = true;
        c.cmdnew.enabled = true;
        c.cmdmodi.enabled = true;
        break;
    case AccountsMode::New:
        c.txtconf.enabled = true;
        c.txtuser.readOnly = true;
        c.txtuser.visible = false;
        c.txtnuser.visible = true;
        c.txtutype.readOnly = false;
        c.txtkey.readOnly = false;
        c.txtkey.mask = QLatin1Char('*');
        c.cmdsave.enabled = true;
        c.cmddel.enabled = false;
        c.cmdnew.caption = QStringLiteral("Abandon");
        c.cmdmodi.enabled = false;
        break;
    case AccountsMode::Modi:
        c.txtconf.enabled = true;
        c.txtuser.readOnly = true;
        c.txtutype.readOnly = false;
        c.txtkey.readOnly = false;
        c.cmdsave.enabled = true;
        c.cmddel.enabled = false;
        c.cmdnew.enabled = false;
        c.cmdmodi.enabled = false;
        break;
    case AccountsMode::Idle:
        break;
    }
}

QStringList accountTypes() {
    return {QStringLiteral("User"), Admin};
}

AccountsMaintenance::AccountsMaintenance(const Database& database, Prompts& prompts)
    : database_(database), prompts_(prompts), list_(database, prompts) {
    controls_.cmdnew.caption = AddUser;
    controls_.txtconf.mask = QLatin1Char('*');
    list_.load();
    showRow(list_.count() > 0 ? 0 : -1);
    tick();
}

void AccountsMaintenance::showRow(int row) {
    row_ = row >= 0 && row < list_.count() ? row : -1;
    shown_.clear();
    stored_.reset();
    if (row_ < 0)
        return;
    // A password that cannot be read shows as none, and no current password matches it;
    // the operator is not held up by it otherwise.
    try {
        DbSession s(database_);
        auto q =
            s.run(QStringLiteral("SELECT keys FROM sysusers WHERE rowid = ?"), {list_.rowid(row_)});
        if (q.next()) {
            stored_ = q.value(0).toString();
            shown_ = scrambleText(*stored_, QLatin1String(ScrambleKey));
        }
    } catch (const StoreError&) {
    }
}

void AccountsMaintenance::setCurrentRow(int row) {
    if (newPending_ || row == row_)
        return;
    // The current password was confirmed for the account that was current, and for no
    // other: moving on gives up the modification.
    if (mode_ == AccountsMode::Idle || mode_ == AccountsMode::Modi)
        mode_ = AccountsMode::None;
    showRow(row);
}

QString AccountsMaintenance::currentName() const {
    return currentRow() >= 0 ? list_.user(row_) : QString();
}

QString AccountsMaintenance::currentType() const {
    if (newPending_)
        return accountTypes().first(); // the fewest rights until an "Admin" is chosen
    return row_ >= 0 ? list_.category(row_) : QString();
}

QStringList AccountsMaintenance::typeChoices() const {
    QStringList choices = accountTypes();
    // A type written by another tool ("admin", say) shows as it is stored.
    if (currentRow() >= 0 && !choices.contains(currentType()))
        choices << currentType();
    return choices;
}

bool AccountsMaintenance::beginModify() {
    if (currentRow() < 0) {
        prompts_.message(QStringLiteral("There is no account to modify."), QString(),
                         Icon::Information);
        return false;
    }
    prompts_.message(QStringLiteral("Please type in your current password on confirmation box") +
                     QStringLiteral("Then press the enter key"));
    mode_ = AccountsMode::Idle;
    controls_.txtconf.enabled = true;
    controls_.txtkey.mask = QLatin1Char('*');
    return true;
}

AccountsMaintenance::Confirmation
AccountsMaintenance::confirmCurrentPassword(const QString& typed) {
    if (mode_ != AccountsMode::Idle)
        return Confirmation::NotWaiting;
    // Unscrambling the display gives the stored password back only when each of its
    // characters has a byte in the code page; the stored text itself always serves.
    if (!stored_ || typed != *stored_) {
        prompts_.message(QStringLiteral("Password mismatch "));
        mode_ = AccountsMode::None;
        return Confirmation::Mismatch;
    }
    mode_ = AccountsMode::Modi;
    return Confirmation::Confirmed;
}

void AccountsMaintenance::toggleNew() {
    if (controls_.cmdnew.caption == AddUser)
        beginNew();
    else
        cancelNew();
}

void AccountsMaintenance::beginNew() {
    controls_.cmdnew.caption = QStringLiteral("Cancel");
    mode_ = AccountsMode::New;
    newPending_ = true;
    shown_.clear();
    stored_.reset();
    controls_.txtnuser.enabled = true;
    controls_.dbusers.enabled = false;
}

void AccountsMaintenance::cancelNew() {
    newPending_ = false;
    controls_.cmdnew.caption = AddUser;
    mode_ = AccountsMode::None;
    controls_.dbusers.enabled = true;
    showRow(list_.count() > 0 ? 0 : -1);
}

bool AccountsMaintenance::refuseName(const QString& name) {
    if (!hasQuote(name))
        return false;
    prompts_.message(QStringLiteral("A user name cannot hold an apostrophe ( ' ): the log-in would "
                                    "never find it. Type another name."),
                     QString(), Icon::Exclamation);
    return true;
}

bool AccountsMaintenance::checkNewName(const QString& typed) {
    const QString name = typed.trimmed();
    if (name.isEmpty())
        return true;
    if (refuseName(name))
        return false;
    bool used = false;
    try {
        DbSession s(database_);
        used = s.run(QStringLiteral(
                         "SELECT 1 FROM sysusers WHERE \"user\" = ? COLLATE NOCASE LIMIT 1"),
                     {name})
                   .next();
    } catch (const StoreError& e) {
        tellFailure(prompts_, QStringLiteral("The name could not be looked up"), e);
        return true;
    }
    if (used)
        prompts_.message(QStringLiteral("User name : ") + name + QStringLiteral(" already used!"));
    return !used;
}

// The log-in trims what is typed but never what is stored, and an account without a
// password cannot log in at all: either would make an account nobody can use.
bool AccountsMaintenance::refusePassword(const QString& password) {
    if (password.isEmpty())
        prompts_.message(
            QStringLiteral("Type a password: an account without one can never log in."), QString(),
            Icon::Exclamation);
    else if (password.trimmed() != password)
        prompts_.message(QStringLiteral("A password cannot begin or end with a space: the log-in "
                                        "could never match it. Type it again."),
                         QString(), Icon::Exclamation);
    else
        return false;
    return true;
}

AccountsMaintenance::SaveResult AccountsMaintenance::save(const AccountEntry& entry) {
    switch (mode_) {
    case AccountsMode::New:
        return addAccount(entry);
    case AccountsMode::Modi:
        return modifyAccount(entry);
    case AccountsMode::None:
    case AccountsMode::Idle:
        break;
    }
    return finishSave(SaveResult::NothingToSave);
}

AccountsMaintenance::SaveResult AccountsMaintenance::addAccount(const AccountEntry& entry) {
    if (entry.password != entry.confirmation) {
        prompts_.message(QStringLiteral("Password Mismatch"));
        return SaveResult::Mismatch;
    }
    const QString name = entry.newName.trimmed();
    if (name.isEmpty()) {
        prompts_.message(QStringLiteral("Type the new user's name."), QString(), Icon::Exclamation);
        return SaveResult::NameRefused;
    }
    if (refuseName(name))
        return SaveResult::NameRefused;
    if (refusePassword(entry.confirmation))
        return SaveResult::PasswordRefused;

    bool used = false;
    qint64 rowid = 0;
    try {
        DbSession s(database_);
        s.begin();
        used = s.run(QStringLiteral(
                         "SELECT 1 FROM sysusers WHERE \"user\" = ? COLLATE NOCASE LIMIT 1"),
                     {name})
                   .next();
        if (!used) {
            auto q = s.run(
                QStringLiteral("INSERT INTO sysusers (\"user\", utype, keys) VALUES (?, ?, ?)"),
                {name, entry.type, entry.confirmation});
            rowid = q.lastInsertId().toLongLong();
            s.commit();
        }
    } catch (const StoreError& e) {
        tellFailure(prompts_, QStringLiteral("The account could not be saved"), e);
        return SaveResult::Failed;
    }
    // Looked up again here, as the name may have been typed without Enter.
    if (used) {
        prompts_.message(QStringLiteral("User name : ") + name + QStringLiteral(" already used!"));
        return SaveResult::NameRefused;
    }
    newPending_ = false;
    controls_.cmdnew.caption = AddUser;
    list_.load();
    showRow(list_.rowOf(rowid));
    return finishSave(SaveResult::Saved);
}

AccountsMaintenance::SaveResult AccountsMaintenance::modifyAccount(const AccountEntry& entry) {
    if (row_ < 0)
        return finishSave(SaveResult::NothingToSave);
    // The password kept as it is needs no check: it is the account's already.
    if (entry.confirmation != stored_ && refusePassword(entry.confirmation))
        return SaveResult::PasswordRefused;

    const qint64 rowid = list_.rowid(row_);
    const int adminsBefore = adminCount();
    bool gone = false;
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("UPDATE sysusers SET utype = ?, keys = ? WHERE rowid = ?"),
                       {entry.type, entry.confirmation, rowid});
        gone = q.numRowsAffected() == 0;
    } catch (const StoreError& e) {
        tellFailure(prompts_, QStringLiteral("The account could not be saved"), e);
        return SaveResult::Failed;
    }
    const int row = row_;
    list_.load();
    if (gone) {
        prompts_.message(QStringLiteral("This account is no longer in the table; the list now "
                                        "shows the accounts as they are."),
                         QStringLiteral("Not saved"), Icon::Exclamation);
        showRow(qMin(row, list_.count() - 1));
        return finishSave(SaveResult::Failed);
    }
    showRow(list_.rowOf(rowid));
    warnWhenNoAdminLeft(adminsBefore);
    return finishSave(SaveResult::Saved);
}

AccountsMaintenance::SaveResult AccountsMaintenance::finishSave(SaveResult result) {
    controls_.txtkey.mask = QLatin1Char('@');
    mode_ = AccountsMode::None;
    controls_.dbusers.enabled = true;
    return result;
}

bool AccountsMaintenance::deleteCurrent() {
    if (currentRow() < 0)
        return false;
    if (prompts_.ask(QStringLiteral("Delete user : ") + currentName() + QStringLiteral(" ?"),
                     QString(), Prompts::Buttons::YesNo, Icon::Critical) != Prompts::Answer::Yes)
        return false;
    const int adminsBefore = adminCount();
    try {
        DbSession s(database_);
        s.run(QStringLiteral("DELETE FROM sysusers WHERE rowid = ?"), {list_.rowid(row_)});
    } catch (const StoreError& e) {
        tellFailure(prompts_, QStringLiteral("The account could not be deleted"), e);
        return false;
    }
    // A current password being asked for was the deleted account's.
    if (mode_ == AccountsMode::Idle)
        mode_ = AccountsMode::None;
    const int row = row_;
    list_.load();
    showRow(qMin(row, list_.count() - 1));
    warnWhenNoAdminLeft(adminsBefore);
    return true;
}

// Only the exact type "Admin" grants the administrator's commands.
int AccountsMaintenance::adminCount() const {
    try {
        DbSession s(database_);
        auto q =
            s.run(QStringLiteral("SELECT count(*) FROM sysusers WHERE utype = ? COLLATE BINARY"),
                  {Admin});
        return q.next() ? q.value(0).toInt() : 0;
    } catch (const StoreError&) {
        return -1; // not known: nothing is said
    }
}

// Nothing stops the last administrator from going, but once gone nobody can open this
// window or the settings again: the operator is told while it can still be put right.
void AccountsMaintenance::warnWhenNoAdminLeft(int adminsBefore) {
    if (adminsBefore > 0 && adminCount() == 0)
        prompts_.message(QStringLiteral("No account of type Admin is left: nobody will be able to "
                                        "manage the operator accounts or the settings. Add an "
                                        "Admin account, or make one of the accounts an Admin, "
                                        "before closing this window."),
                         QStringLiteral("No administrator left"), Icon::Exclamation);
}
