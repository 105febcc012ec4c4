#include "people/members_desk.h"

#include "base/clock.h"
#include "base/prompts.h"
#include "store/database.h"

namespace {
using Icon = Prompts::Icon;

const QString EveryMemberTitle = QStringLiteral("Members");

MemberField fieldOf(MembersDesk::FindBy by) {
    switch (by) {
    case MembersDesk::FindBy::LastName:
        return MemberField::LastName;
    case MembersDesk::FindBy::FirstName:
        return MemberField::FirstName;
    case MembersDesk::FindBy::Id:
        return MemberField::Id;
    }
    return MemberField::LastName;
}

} // namespace

MembersDesk::MembersDesk(const Database& database, Prompts& prompts, const Clock& clock,
                         QObject* parent)
    : QObject(parent), prompts_(prompts), clock_(clock),
      list_(database, MemberListModel::Rows::Counted), register_(database, prompts) {}

QString MembersDesk::addCaption() const {
    return mode_ == Mode::Adding ? QStringLiteral("Save New") : QStringLiteral("Add Member");
}

QString MembersDesk::editCaption() const {
    return mode_ == Mode::Editing ? QStringLiteral("Save Edit") : QStringLiteral("Edit Info");
}

QString MembersDesk::closeCaption() const {
    return mode_ == Mode::Browsing ? QStringLiteral("Close") : QStringLiteral("Abandon");
}

bool MembersDesk::open() {
    if (!show({}))
        return false;
    goTo(list_.rowCount() > 0 ? 0 : -1);
    return true;
}

void MembersDesk::setCurrentRow(int row) {
    currentRow_ = row;
    if (mode_ == Mode::Browsing)
        Q_EMIT fieldsChanged(currentMember());
}

Member MembersDesk::currentMember() const {
    const auto row = list_.rowAt(currentRow_);
    return row ? row->member : Member{};
}

void MembersDesk::addPressed(const Member& typed) {
    if (mode_ == Mode::Editing)
        return;
    if (mode_ == Mode::Browsing) {
        int rows = 0;
        try {
            rows = register_.count();
        } catch (const StoreError& e) {
            tellFailure(QStringLiteral("No member can be added"), e.text());
            return;
        }
        goTo(list_.rowCount() - 1);
        setMode(Mode::Adding);
        Member blank;
        blank.id = nextMemberId(rows);
        blank.since = clock_.today().toString(QStringLiteral("MM/dd/yyyy"));
        Q_EMIT fieldsChanged(blank);
        return;
    }
    const auto rowid = register_.add(typed);
    if (!rowid)
        return; // told; the operator may correct the boxes and save again
    setMode(Mode::Browsing);
    // Every member, so that the new one is in the list whatever was found before.
    if (!show({}))
        return;
    std::optional<int> row;
    try {
        row = list_.rowOf(*rowid);
    } catch (const StoreError&) {
        // shown at the end, where a new member stands
    }
    goTo(row.value_or(list_.rowCount() - 1));
}

void MembersDesk::editPressed(const Member& typed) {
    if (mode_ == Mode::Adding)
        return;
    if (mode_ == Mode::Browsing) {
        editing_ = list_.rowAt(currentRow_);
        if (!editing_) {
            tellEmpty();
            return;
        }
        setMode(Mode::Editing);
        return;
    }
    const auto outcome = register_.update(*editing_, typed);
    if (outcome == MemberRegister::Outcome::NotWritten)
        return; // told; still editing
    const qint64 rowid = editing_->key.rowid;
    const int was = currentRow_;
    editing_.reset();
    setMode(Mode::Browsing);
    if (!show(list_.filter()))
        return;
    std::optional<int> row;
    try {
        row = list_.rowOf(rowid);
    } catch (const StoreError&) {
        // the row it stood at is shown instead
    }
    goTo(row.value_or(qMin(was, list_.rowCount() - 1)));
}

bool MembersDesk::closePressed() {
    if (mode_ == Mode::Browsing)
        return true;
    editing_.reset();
    setMode(Mode::Browsing);
    Q_EMIT fieldsChanged(currentMember());
    return false;
}

void MembersDesk::deletePressed() {
    if (mode_ != Mode::Browsing)
        return;
    if (prompts_.ask(QStringLiteral("Remove current record?"), QStringLiteral("Delete?"),
                     Prompts::Buttons::YesNo, Icon::Critical) != Prompts::Answer::Yes)
        return;
    const auto row = list_.rowAt(currentRow_);
    if (!row) {
        prompts_.message(QStringLiteral("Members Record is already empty"),
                         QStringLiteral("Empty"));
        return;
    }
    if (register_.remove(*row) == MemberRegister::Outcome::NotWritten)
        return;
    if (show(list_.filter()))
        goTo(list_.rowCount() - 1);
}

void MembersDesk::findPressed(FindBy by, const QString& key) {
    if (mode_ != Mode::Browsing)
        return;
    if (key.isEmpty()) {
        prompts_.message(QStringLiteral("Search strings is empty"), QStringLiteral("No search key"),
                         Icon::Information);
        return;
    }
    if (hasQuote(key)) {
        prompts_.message(quotedSearchKey(key), QStringLiteral("No search key"), Icon::Exclamation);
        return;
    }
    if (!show({fieldOf(by), key.trimmed()}))
        return;
    if (list_.rowCount() == 0) {
        prompts_.message(QStringLiteral("Result Query is Empty"));
        if (!show({}))
            return;
    }
    goTo(list_.rowCount() > 0 ? 0 : -1);
}

void MembersDesk::browsePressed() {
    if (mode_ == Mode::Browsing && show({}))
        goTo(list_.rowCount() > 0 ? 0 : -1);
}

std::optional<std::pair<QString, QString>> MembersDesk::logOnMember() {
    if (mode_ != Mode::Browsing)
        return std::nullopt;
    const auto row = list_.rowAt(currentRow_);
    if (!row) {
        tellEmpty();
        return std::nullopt;
    }
    return std::pair{row->member.id, logOnName(row->member)};
}

bool MembersDesk::show(const MemberFilter& filter) {
    try {
        list_.show(filter);
        return true;
    } catch (const StoreError& e) {
        tellFailure(QStringLiteral("The members cannot be read"), e.text());
        return false;
    }
}

void MembersDesk::goTo(int row) {
    currentRow_ = row;
    Q_EMIT currentRowChanged(row);
    if (mode_ == Mode::Browsing)
        Q_EMIT fieldsChanged(currentMember());
}

void MembersDesk::setMode(Mode mode) {
    if (mode_ == mode)
        return;
    mode_ = mode;
    Q_EMIT modeChanged();
}

void MembersDesk::tellEmpty() {
    prompts_.message(QStringLiteral("Members Record is already empty"), QStringLiteral("Empty"));
}

void MembersDesk::tellFailure(const QString& what, const QString& why) {
    prompts_.message(QStringLiteral("%1: %2").arg(what, why), EveryMemberTitle, Icon::Critical);
}
