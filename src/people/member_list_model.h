#pragma once

#include "people/member_query.h"
#include "people/member_rules.h"

#include <QAbstractTableModel>

#include <map>
#include <optional>
#include <vector>

class Database;

// One member row of a grid: where it stands and what it shows.
struct MemberRow {
    MemberRowKey key;
    Member member;
};

// The members a filter selects, as the register's and the search's grids show them, under
// the captions ID, Last_Name, First_Name, Middle_Name, Address, Disc, Status, mdate and
// Accuhrs. Only the pages of rows a view asks for are read, a hundred rows at a time, so a
// register of any size opens and searches at the cost of the rows on screen.
class MemberListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum class Rows {
        // Every selected row has its place from the start (one count), so the scroll bar
        // spans the whole register and its last row is one read away.
        Counted,
        // Rows are added a page at a time as the view scrolls down: no count, so a key
        // typed into a search costs only the first page.
        AsFetched,
    };
    static constexpr int PageRows = 100;
    static constexpr int KeptPages = 40; // Counted: pages further from use are read again

    MemberListModel(const Database& database, Rows rows, QObject* parent = nullptr);

    // Shows from the top the members `filter` selects. Throws StoreError, and then keeps
    // showing what it showed.
    void show(const MemberFilter& filter);
    // The same filter again, after the table changed.
    void reload() { show(filter_); }
    const MemberFilter& filter() const { return filter_; }

    // The row at `row`, read now if it has not been; none past the end, or when reading
    // fails (told by readFailed).
    std::optional<MemberRow> rowAt(int row) const;
    // Where the row stored at `rowid` stands in the current order, if the filter selects it
    // (and it has a name and an id). Throws StoreError.
    std::optional<int> rowOf(qint64 rowid) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex& parent = {}) const override;
    void fetchMore(const QModelIndex& parent = {}) override;

Q_SIGNALS:
    // A page could not be read while a view was drawing or scrolling; told once per show().
    void readFailed(const QString& text);

private:
    struct Page {
        std::vector<MemberRow> rows;
        quint64 used = 0;
    };

    std::vector<MemberRow> read(const MemberStatement& statement) const;
    // Page `page` of `filter`, continued from the page before it when that one is at hand.
    std::vector<MemberRow> readPage(const MemberFilter& filter, int page,
                                    const std::map<int, Page>& pages, int limit) const;
    const Page* pageAt(int page) const;
    void failed(const QString& text) const;

    const Database& database_;
    Rows rows_;
    MemberFilter filter_;
    mutable std::map<int, Page> pages_;
    mutable quint64 uses_ = 0;
    int count_ = 0;     // Counted: rows selected; AsFetched: rows read
    bool atEnd_ = true; // AsFetched: no row after those read
    mutable bool told_ = false;
};
