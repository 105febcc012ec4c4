#pragma once

#include <QString>
#include <QVariant>

#include <optional>

// The field a member search compares; Name is the last name followed at once by the first
// name, so that one text may span the two.
enum class MemberField { LastName, FirstName, Id, Name };

// Which members a grid shows: all of them, in the order they were registered; or those
// whose field holds `text` anywhere, in any letter case, by last name.
struct MemberFilter {
    std::optional<MemberField> field;
    QString text;

    bool operator==(const MemberFilter&) const = default;
};

// One statement and the values it is run with.
struct MemberStatement {
    QString sql;
    QVariantList values;
};

// Where a row stands in its grid's order, as read with it: enough to continue after it
// without counting the rows before.
struct MemberRowKey {
    qint64 rowid = 0;
    QVariant lastName, firstName, id; // as stored; null when the field is empty in the file

    // Rows with a missing name or id sort first and cannot be continued after by key.
    bool complete() const { return !lastName.isNull() && !firstName.isNull() && !id.isNull(); }
};

// The statements behind the member grids. A page reads, in this order, the columns
// rowid, CID, LN, FN, MN, ADR, Disc, Status, mdate, Accuhrs. Searches read the name index
// in its own order (last name, first name, id, rowid) and stop at the page's end, so a
// page costs the rows up to it and never a sort of every member.
namespace memberQuery {

enum Column { RowId, Cid, Ln, Fn, Mn, Adr, Disc, Status, Mdate, Accuhrs, ColumnCount };

// `limit` rows from the start, or after the row with key `after`.
MemberStatement page(const MemberFilter& filter, const std::optional<MemberRowKey>& after,
                     int limit);
// `limit` rows from position `offset`, counted from the start or, backwards, from the end
// (the last row first): slower than continuing after a key, for jumps.
MemberStatement pageAt(const MemberFilter& filter, int offset, int limit, bool fromEnd = false);
// How many rows the filter selects.
MemberStatement count(const MemberFilter& filter);
// Of the row at `rowid`: LN, FN, CID and whether the filter selects it; no row when it is
// gone.
MemberStatement keyOf(const MemberFilter& filter, qint64 rowid);
// How many selected rows come before the row with key `key`.
MemberStatement countBefore(const MemberFilter& filter, const MemberRowKey& key);

// The condition "holds `text` in any letter case" on `expression`, with the value to bind:
// LIKE when the text's letters are all ASCII (which LIKE folds itself), else GLOB with a
// class of both cases for each letter, so that "ñ" finds "PEÑA" too. Wildcards in the text
// stand for themselves.
MemberStatement holds(const QString& expression, const QString& text);

} // namespace memberQuery
