#include "people/member_search.h"

#include "base/prompts.h"
#include "store/database.h"

MemberSearch::MemberSearch(const Database& database, Prompts& prompts)
    : prompts_(prompts), list_(database, MemberListModel::Rows::AsFetched) {}

bool MemberSearch::open() {
    return show({}, true);
}

std::optional<MemberFilter> MemberSearch::filterFor(const QString& text) const {
    if (hasQuote(text))
        return std::nullopt;
    return MemberFilter{by_ == By::Id ? MemberField::Id : MemberField::Name, text.trimmed()};
}

void MemberSearch::setBy(By by) {
    by_ = by;
    typed(text_);
}

void MemberSearch::typed(const QString& text) {
    text_ = text;
    if (const auto filter = filterFor(text))
        show(*filter, false);
}

bool MemberSearch::enter() {
    const auto filter = filterFor(text_);
    if (!filter) {
        prompts_.message(quotedSearchKey(text_), QStringLiteral("Try another key"),
                         Prompts::Icon::Exclamation);
        return false;
    }
    if (!show(*filter, true))
        return false;
    if (list_.rowCount() > 0)
        return true;
    prompts_.message(QStringLiteral("Query result is empty"), QStringLiteral("Try another key"));
    return false;
}

std::optional<std::pair<QString, QString>> MemberSearch::passed(int row) const {
    const auto r = list_.rowAt(row);
    if (!r)
        return std::nullopt;
    return std::pair{r->member.id, searchName(r->member)};
}

bool MemberSearch::show(const MemberFilter& filter, bool tellEveryFailure) {
    try {
        list_.show(filter);
        lastFailure_.clear();
        return true;
    } catch (const StoreError& e) {
        // A failing file would otherwise answer every key with the same box.
        if (tellEveryFailure || e.text() != lastFailure_)
            prompts_.message(QStringLiteral("The members cannot be read: %1").arg(e.text()),
                             QStringLiteral("Members"), Prompts::Icon::Critical);
        lastFailure_ = e.text();
        return false;
    }
}
