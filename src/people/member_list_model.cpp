#include "people/member_list_model.h"

#include "store/database.h"

#include <QDate>
#include <QSqlRecord>

#include <algorithm>

namespace {

const char* const Captions[] = {"ID",   "Last_Name", "First_Name", "Middle_Name", "Address",
                                "Disc", "Status",    "mdate",      "Accuhrs"};
constexpr int ColumnCount = int(std::size(Captions));

QString shownText(const QVariant& v) {
    if (v.isNull())
        return {};
    if (v.typeId() == QMetaType::Double)
        return QString::number(v.toDouble(), 'g', 15);
    return v.toString();
}

// Dates are stored as ISO dates (a file made by another tool may hold a time with them, or
// text of its own, shown as it is).
QString shownDate(const QVariant& v) {
    const QString text = shownText(v);
    const QDate day = QDate::fromString(text.left(10), Qt::ISODate);
    if (!day.isValid() || (text.size() > 10 && text[10] != u'T' && text[10] != u' '))
        return text;
    return day.toString(QStringLiteral("MM/dd/yyyy"));
}

MemberRow rowOfQuery(const QSqlQuery& q) {
    using namespace memberQuery;
    MemberRow r;
    r.key = {q.value(RowId).toLongLong(), q.value(Ln), q.value(Fn), q.value(Cid)};
    r.member = {shownText(q.value(Cid)),    shownText(q.value(Ln)),    shownText(q.value(Fn)),
                shownText(q.value(Mn)),     shownText(q.value(Adr)),   shownText(q.value(Disc)),
                shownText(q.value(Status)), shownDate(q.value(Mdate)), shownText(q.value(Accuhrs))};
    return r;
}

const QString& field(const Member& m, int column) {
    const QString* fields[] = {&m.id,       &m.lastName, &m.firstName, &m.middleName, &m.address,
                               &m.discount, &m.status,   &m.since,     &m.hours};
    return *fields[column];
}

} // namespace

MemberListModel::MemberListModel(const Database& database, Rows rows, QObject* parent)
    : QAbstractTableModel(parent), database_(database), rows_(rows) {}

std::vector<MemberRow> MemberListModel::read(const MemberStatement& statement) const {
    std::vector<MemberRow> rows;
    DbSession s(database_);
    auto q = s.run(statement.sql, statement.values);
    while (q.next())
        rows.push_back(rowOfQuery(q));
    return rows;
}

std::vector<MemberRow> MemberListModel::readPage(const MemberFilter& filter, int page,
                                                 const std::map<int, Page>& pages,
                                                 int limit) const {
    if (page > 0) {
        const auto before = pages.find(page - 1);
        if (before != pages.end() && before->second.rows.size() >= size_t(PageRows) &&
            before->second.rows[PageRows - 1].key.complete())
            return read(memberQuery::page(filter, before->second.rows[PageRows - 1].key, limit));
        // A jump: counted from the nearer end, so that the last rows are as near as the first.
        const int first = page * PageRows;
        const int afterLast = qMin(first + limit, qMax(count_, first));
        if (rows_ == Rows::Counted && count_ - afterLast < first) {
            auto rows =
                read(memberQuery::pageAt(filter, count_ - afterLast, afterLast - first, true));
            std::reverse(rows.begin(), rows.end());
            return rows;
        }
        return read(memberQuery::pageAt(filter, first, limit));
    }
    return read(memberQuery::page(filter, std::nullopt, limit));
}

void MemberListModel::show(const MemberFilter& filter) {
    std::map<int, Page> pages;
    int count = 0;
    bool atEnd = true;
    if (rows_ == Rows::Counted) {
        DbSession s(database_);
        const MemberStatement c = memberQuery::count(filter);
        auto q = s.run(c.sql, c.values);
        count = q.next() ? q.value(0).toInt() : 0;
        if (count > 0)
            pages[0].rows = readPage(filter, 0, pages, PageRows);
    } else {
        // One row more than a page tells whether there is more.
        auto rows = readPage(filter, 0, pages, PageRows + 1);
        atEnd = rows.size() <= size_t(PageRows);
        if (!atEnd)
            rows.pop_back();
        count = int(rows.size());
        if (count > 0)
            pages[0].rows = std::move(rows);
    }
    beginResetModel();
    filter_ = filter;
    pages_ = std::move(pages);
    count_ = count;
    atEnd_ = atEnd;
    told_ = false;
    endResetModel();
}

const MemberListModel::Page* MemberListModel::pageAt(int page) const {
    auto it = pages_.find(page);
    if (it == pages_.end()) {
        if (rows_ == Rows::AsFetched)
            return nullptr;
        try {
            Page read;
            read.rows = readPage(filter_, page, pages_, PageRows);
            it = pages_.emplace(page, std::move(read)).first;
        } catch (const StoreError& e) {
            failed(e.text());
            return nullptr;
        }
        if (pages_.size() > size_t(KeptPages)) {
            auto oldest = pages_.begin();
            for (auto p = pages_.begin(); p != pages_.end(); ++p)
                if (p->first != page &&
                    (oldest->first == page || p->second.used < oldest->second.used))
                    oldest = p;
            pages_.erase(oldest);
        }
    }
    it->second.used = ++uses_;
    return &it->second;
}

std::optional<MemberRow> MemberListModel::rowAt(int row) const {
    if (row < 0 || row >= count_)
        return std::nullopt;
    const Page* page = pageAt(row / PageRows);
    const size_t at = size_t(row % PageRows);
    if (!page || at >= page->rows.size())
        return std::nullopt;
    return page->rows[at];
}

std::optional<int> MemberListModel::rowOf(qint64 rowid) const {
    MemberRowKey key;
    {
        DbSession s(database_);
        const MemberStatement k = memberQuery::keyOf(filter_, rowid);
        auto q = s.run(k.sql, k.values);
        if (!q.next() || q.value(3).toInt() == 0)
            return std::nullopt;
        key = {rowid, q.value(0), q.value(1), q.value(2)};
    }
    if (filter_.field && !key.complete())
        return std::nullopt;
    int before = 0;
    {
        DbSession s(database_);
        const MemberStatement c = memberQuery::countBefore(filter_, key);
        auto q = s.run(c.sql, c.values);
        before = q.next() ? q.value(0).toInt() : 0;
    }
    // The grid may show an older reading of the table: only a row found there is its place.
    const auto shown = rowAt(before);
    if (!shown || shown->key.rowid != rowid)
        return std::nullopt;
    return before;
}

int MemberListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

int MemberListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MemberListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.column() >= ColumnCount)
        return {};
    if (role == Qt::TextAlignmentRole) {
        const bool number = index.column() == 5 || index.column() == 8;
        return QVariant::fromValue(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft));
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const auto row = rowAt(index.row());
    return row ? QVariant(field(row->member, index.column())) : QVariant();
}

QVariant MemberListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < ColumnCount)
        return QString::fromLatin1(Captions[section]);
    return QAbstractTableModel::headerData(section, orientation, role);
}

bool MemberListModel::canFetchMore(const QModelIndex& parent) const {
    return !parent.isValid() && rows_ == Rows::AsFetched && !atEnd_;
}

void MemberListModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent))
        return;
    const int page = count_ / PageRows;
    std::vector<MemberRow> rows;
    try {
        rows = readPage(filter_, page, pages_, PageRows + 1);
    } catch (const StoreError& e) {
        atEnd_ = true; // not tried again until the next show()
        failed(e.text());
        return;
    }
    atEnd_ = rows.size() <= size_t(PageRows);
    if (!atEnd_)
        rows.pop_back();
    if (rows.empty())
        return;
    beginInsertRows({}, count_, count_ + int(rows.size()) - 1);
    count_ += int(rows.size());
    pages_[page].rows = std::move(rows);
    endInsertRows();
}

void MemberListModel::failed(const QString& text) const {
    if (told_)
        return;
    told_ = true;
    Q_EMIT const_cast<MemberListModel*>(this)->readFailed(text);
}
