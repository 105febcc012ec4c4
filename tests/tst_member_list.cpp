// The members grids' rows, read page by page from a real database file.
#include "people/member_list_model.h"
#include "people/member_register.h"
#include "people/member_rules.h"
#include "store/database.h"
#include "support/files.h"
#include "support/recording_prompts.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <numeric>
#include <random>

using namespace Qt::StringLiterals;
using Rows = MemberListModel::Rows;
Q_DECLARE_METATYPE(std::optional<MemberField>)

namespace {

// A members table declared as another tool would: no collations, Access's types.
const QString ToolMembers = u"CREATE TABLE members (CID TEXT, LN TEXT, FN TEXT, MN TEXT, "
                            "ADR TEXT, Disc NUMBER, Status TEXT, mdate DATE, Accuhrs NUMBER);"_s;

struct Store {
    QTemporaryDir dir;
    AppFolder folder{dir.path()};
    Database db{folder};

    explicit Store(bool madeByAnotherTool = false) {
        if (madeByAnotherTool)
            sqliteTool(db.path(), ToolMembers);
        db.prepare();
    }
    void exec(const QString& sql, const QVariantList& values = {}) {
        DbSession s(db);
        s.run(sql, values);
    }
};

struct Stored {
    qint64 rowid;
    QVariant ln, fn, cid;
};

// A register with names in several letter cases, equal names, and rows another tool left
// without a last name, a first name or an id.
void fill(Store& st, int count) {
    const char* lasts[] = {"Cruz",      "Santos", "Andrada", "Reyes",  "Tomas",   "Bautista",
                           "Dela Cruz", "Ocampo", "Mendoza", "Aquino", "Navarro", "Lopez"};
    const char* firsts[] = {"Juan", "Maria", "Ana", "Jose", "Mark", "Rosa", "Paolo"};
    DbSession s(st.db);
    s.begin();
    for (int i = 0; i < count; ++i) {
        QString ln = QString::fromLatin1(lasts[(i * 7) % 12]);
        if (i % 3 == 1)
            ln = ln.toUpper();
        else if (i % 3 == 2)
            ln = ln.toLower();
        const QVariant last = i % 97 == 5 ? QVariant() : QVariant(ln);
        const QVariant first =
            i % 89 == 7 ? QVariant() : QVariant(QString::fromLatin1(firsts[(i * 5) % 7]));
        const QVariant id =
            i % 101 == 9 ? QVariant() : QVariant(u"ID-%1"_s.arg(i % 400, 5, 10, QLatin1Char('0')));
        s.run(u"INSERT INTO members (CID, LN, FN, MN, Disc) VALUES (?, ?, ?, 'M', 0)"_s,
              {id, last, first});
    }
    s.commit();
}

std::vector<Stored> everyRow(Store& st) {
    std::vector<Stored> rows;
    DbSession s(st.db);
    auto q = s.run(u"SELECT rowid, LN, FN, CID FROM members ORDER BY rowid"_s);
    while (q.next())
        rows.push_back({q.value(0).toLongLong(), q.value(1), q.value(2), q.value(3)});
    return rows;
}

// What a filter selects, in the order the grids promise: all in order of entry, or a
// search by last name, first name and id (missing ones first, letter case ignored).
std::vector<qint64> expected(std::vector<Stored> rows, const MemberFilter& filter) {
    auto holds = [&](const Stored& r) {
        const QVariant name = r.ln.isNull() || r.fn.isNull()
                                  ? QVariant()
                                  : QVariant(r.ln.toString() + r.fn.toString());
        const QVariant v = QVariantList{r.ln, r.fn, r.cid, name}.at(int(*filter.field));
        return !v.isNull() && v.toString().contains(filter.text, Qt::CaseInsensitive);
    };
    if (filter.field)
        std::erase_if(rows, [&](const Stored& r) { return !holds(r); });
    if (filter.field) {
        auto key = [](const QVariant& v) {
            return std::pair{!v.isNull(), v.toString().toLower()};
        };
        std::stable_sort(rows.begin(), rows.end(), [&](const Stored& a, const Stored& b) {
            return std::tuple{key(a.ln), key(a.fn), key(a.cid), a.rowid} <
                   std::tuple{key(b.ln), key(b.fn), key(b.cid), b.rowid};
        });
    }
    std::vector<qint64> ids(rows.size());
    std::transform(rows.begin(), rows.end(), ids.begin(), [](const Stored& r) { return r.rowid; });
    return ids;
}

} // namespace

class MemberListTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // More rows than the pages kept, so that pages are dropped and read again, continued
    // from the page before or counted from the top; "fetched" reads them as the grid scrolls.
    void everyRowOnceInOrder_data() {
        QTest::addColumn<std::optional<MemberField>>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("walk"); // "down", "up", "jumps", "fetched"
        QTest::addColumn<bool>("madeByAnotherTool");
        for (const QString& walk : {u"down"_s, u"up"_s, u"jumps"_s, u"fetched"_s})
            QTest::addRow("all, %s", qPrintable(walk))
                << std::optional<MemberField>() << QString() << walk << false;
        using F = MemberField;
        for (bool tool : {false, true})
            for (const auto& [label, field, text, walk] :
                 {std::tuple{"last name", F::LastName, "an", "jumps"},
                  {"last name", F::LastName, "a", "up"},
                  {"name across both", F::Name, "zj", "fetched"},
                  {"id", F::Id, "d-00", "fetched"},
                  {"first name", F::FirstName, "o", "jumps"}})
                QTest::addRow("%s %s, %s%s", label, text, walk, tool ? ", another tool's file" : "")
                    << std::optional(field) << QString::fromLatin1(text)
                    << QString::fromLatin1(walk) << tool;
    }
    void everyRowOnceInOrder() {
        QFETCH(std::optional<MemberField>, field);
        QFETCH(QString, text);
        QFETCH(QString, walk);
        QFETCH(bool, madeByAnotherTool);
        Store st(madeByAnotherTool);
        fill(st, 4567);
        const MemberFilter filter{field, text};
        const std::vector<qint64> want = expected(everyRow(st), filter);
        QVERIFY(want.size() > size_t(MemberListModel::PageRows));

        const Rows rows = walk == u"fetched"_s ? Rows::AsFetched : Rows::Counted;
        MemberListModel model(st.db, rows);
        QSignalSpy failures(&model, &MemberListModel::readFailed);
        model.show(filter);
        std::vector<qint64> got;
        if (rows == Rows::AsFetched) {
            QCOMPARE(model.rowCount(), MemberListModel::PageRows);
            while (model.canFetchMore())
                model.fetchMore();
            for (int r = 0; r < model.rowCount(); ++r)
                got.push_back(model.rowAt(r)->key.rowid);
        } else {
            QCOMPARE(model.rowCount(), int(want.size()));
            got.assign(want.size(), -1);
            std::vector<int> order(want.size());
            std::iota(order.begin(), order.end(), 0);
            if (walk == u"up"_s)
                std::reverse(order.begin(), order.end());
            if (walk == u"jumps"_s)
                std::shuffle(order.begin(), order.end(), std::mt19937(7));
            for (int r : order) {
                const auto row = model.rowAt(r);
                QVERIFY2(row, qPrintable(u"row %1 not read"_s.arg(r)));
                got[size_t(r)] = row->key.rowid;
            }
        }
        QCOMPARE(got, want);
        QCOMPARE(failures.count(), 0);
    }

    // A search text stands for itself: wildcards match only themselves, and letters match
    // in either case, beyond ASCII too.
    void searchTextMatches_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("found");
        const QStringList enye{u"PEÑA"_s, u"peña"_s, u"Ñ?"_s, u"ÑX"_s};
        QTest::newRow("ñ") << u"ñ"_s << enye;
        QTest::newRow("Ñ") << u"Ñ"_s << enye;
        QTest::newRow("ASCII and ñ") << u"eñA"_s << QStringList{u"PEÑA"_s, u"peña"_s};
        QTest::newRow("n is not ñ") << u"pen"_s << QStringList{u"Pena"_s};
        QTest::newRow("an, any case") << u"AN"_s << QStringList{u"Andrada"_s, u"Santos"_s};
        QTest::newRow("percent") << u"%"_s << QStringList{u"50%OFF"_s};
        QTest::newRow("underscore") << u"_"_s << QStringList{u"A_B"_s};
        QTest::newRow("backslash") << u"\\"_s << QStringList{u"back\\slash"_s};
        QTest::newRow("brackets") << u"[a]"_s << QStringList{u"br[a]cket"_s};
        QTest::newRow("star") << u"*"_s << QStringList{u"star*"_s};
        QTest::newRow("question mark with ñ") << u"ñ?"_s << QStringList{u"Ñ?"_s};
        QTest::newRow("nothing") << u"xq"_s << QStringList{};
    }
    void searchTextMatches() {
        QFETCH(QString, text);
        QFETCH(QStringList, found);
        Store st;
        {
            DbSession s(st.db);
            s.begin();
            for (const QString& ln : {u"PEÑA"_s, u"peña"_s, u"Pena"_s, u"50%OFF"_s, u"A_B"_s,
                                      u"AXB"_s, u"back\\slash"_s, u"br[a]cket"_s, u"star*"_s,
                                      u"Ñ?"_s, u"ÑX"_s, u"Andrada"_s, u"Santos"_s})
                s.run(u"INSERT INTO members (CID, LN, FN) VALUES ('ID-1', ?, 'X')"_s, {ln});
            s.commit();
        }
        MemberListModel model(st.db, Rows::Counted);
        model.show({MemberField::LastName, text});
        QStringList got;
        for (int r = 0; r < model.rowCount(); ++r)
            got << model.rowAt(r)->member.lastName;
        got.sort();
        found.sort();
        QCOMPARE(got, found);
    }

    // After a write the register goes to the member written; equal names and nameless rows
    // come before it.
    void placeOfARow_data() {
        QTest::addColumn<std::optional<MemberField>>("field");
        QTest::addColumn<QString>("text");
        QTest::newRow("all") << std::optional<MemberField>() << QString();
        QTest::newRow("last name") << std::optional(MemberField::LastName) << u"CRU"_s;
        QTest::newRow("first name") << std::optional(MemberField::FirstName) << u"a"_s;
    }
    void placeOfARow() {
        QFETCH(std::optional<MemberField>, field);
        QFETCH(QString, text);
        Store st(true);
        fill(st, 700);
        const MemberFilter filter{field, text};
        const auto rows = everyRow(st);
        const auto want = expected(rows, filter);
        MemberListModel model(st.db, Rows::Counted);
        model.show(filter);
        int placed = 0;
        for (const Stored& r : rows) {
            const auto at = std::find(want.begin(), want.end(), r.rowid);
            const bool named = !r.ln.isNull() && !r.fn.isNull() && !r.cid.isNull();
            const auto place = model.rowOf(r.rowid);
            if (at == want.end() || (!named && field)) {
                QVERIFY2(!place, qPrintable(u"row %1 placed"_s.arg(r.rowid)));
                continue;
            }
            QCOMPARE(place, std::optional(int(at - want.begin())));
            ++placed;
        }
        QVERIFY(placed > 100);
    }

    // An edit or a deletion names its row as it was read: a row another program changed
    // or removed meanwhile is left alone, and the operator told.
    void rowChangedMeanwhile_data() {
        QTest::addColumn<QString>("write");   // "update" or "remove"
        QTest::addColumn<bool>("renumbered"); // by another program, after the read
        QTest::addColumn<QString>("left");    // the table afterwards
        for (const QString& write : {u"update"_s, u"remove"_s})
            QTest::addRow("%s, id changed", qPrintable(write))
                << write << true << u"ID-00001 CRUZ|ID-00009 REYES"_s;
        QTest::newRow("update, nothing changed")
            << u"update"_s << false << u"ID-00001 CRUZ|ID-00002 SANTOS"_s;
    }
    void rowChangedMeanwhile() {
        QFETCH(QString, write);
        QFETCH(bool, renumbered);
        QFETCH(QString, left);
        Store st;
        st.exec(u"INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'CRUZ', 'JUAN'), "
                "('ID-00002', 'REYES', 'ANA')"_s);
        MemberListModel model(st.db, Rows::Counted);
        model.show({});
        const MemberRow read = *model.rowAt(1);
        if (renumbered)
            QVERIFY(sqliteTool(st.db.path(),
                               "UPDATE members SET CID = 'ID-00009' WHERE CID = 'ID-00002'"));
        RecordingPrompts prompts;
        MemberRegister members(st.db, prompts);
        Member changed = read.member;
        changed.lastName = u"SANTOS"_s;
        const auto outcome =
            write == u"update"_s ? members.update(read, changed) : members.remove(read);
        QCOMPARE(outcome,
                 renumbered ? MemberRegister::Outcome::RowGone : MemberRegister::Outcome::Written);
        QCOMPARE(prompts.texts().size(), renumbered ? 1 : 0);
        QCOMPARE(sqliteTool(st.db.path(), "SELECT group_concat(CID || ' ' || LN, '|') FROM "
                                          "(SELECT * FROM members ORDER BY CID)"),
                 left);
    }

    // A file gone from under the grid: the search fails as a StoreError, and the grid keeps
    // what it showed.
    void failedReadKeepsTheRows() {
        Store st;
        fill(st, 150);
        MemberListModel model(st.db, Rows::Counted);
        model.show({});
        const QString first = model.rowAt(0)->member.lastName;
        QVERIFY(QFile::rename(st.db.path(), st.db.path() + u".moved"_s));
        QVERIFY_THROWS_EXCEPTION(StoreError, model.show({MemberField::LastName, u"an"_s}));
        QCOMPARE(model.rowCount(), 150);
        QCOMPARE(model.rowAt(0)->member.lastName, first);
        // The second page was never read: it is told once, however often it is drawn.
        QSignalSpy failures(&model, &MemberListModel::readFailed);
        QVERIFY(!model.rowAt(120));
        QVERIFY(!model.rowAt(121));
        QCOMPARE(failures.count(), 1);
        QVERIFY(failures.first().first().toString().contains(u"missing"_s));
    }
};

QTEST_GUILESS_MAIN(MemberListTest)
#include "tst_member_list.moc"
