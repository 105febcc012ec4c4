// What a key typed into the member search costs with 100,000 members in the file: the
// grid's list read anew for the text typed so far, and the rows the grid shows read (and,
// in the second figure, drawn by a real grid). An id and last names are typed one key at a
// time, several times over; the median and the worst key are printed. Then the register's
// own operations: opening, a find, and going to the last row. Run once on a file the
// console made, once on a file made by another tool (columns without collations).
#include "base/app_folder.h"
#include "base/prompts.h"
#include "people/member_query.h"
#include "people/member_rules.h"
#include "people/member_search.h"
#include "store/database.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QTableView>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace {

constexpr int Members = 100000;
constexpr int Rounds = 7;

const char* const LastNames[] = {
    "SANTOS",    "REYES",     "CRUZ",    "BAUTISTA",  "OCAMPO",  "GARCIA",      "MENDOZA",
    "TORRES",    "TOMAS",     "ANDRADA", "CASTILLO",  "FLORES",  "VILLANUEVA",  "RAMOS",
    "CASTRO",    "RIVERA",    "AQUINO",  "NAVARRO",   "SALAZAR", "MERCADO",     "PEÑA",
    "DELA CRUZ", "GONZALES",  "LOPEZ",   "HERNANDEZ", "DIAZ",    "PASCUAL",     "DOMINGO",
    "MORALES",   "GUTIERREZ", "DE LEON", "SORIANO",   "VALDEZ",  "DEL ROSARIO", "MAGBANUA",
    "LIM",       "TAN",       "GO",      "SY",        "CHUA",    "MANALO",      "DIMAGIBA",
    "MACAPAGAL", "AGUILAR",   "SAMONTE", "ESPIRITU",  "CORPUZ",  "DIZON",       "PANGILINAN",
    "LACSON"};
const char* const FirstNames[] = {"JUAN",     "MARIA",   "JOSE",  "ANA",     "PEDRO",
                                  "ROSA",     "MARK",    "JOHN",  "MICHAEL", "ANGELICA",
                                  "KRISTINE", "JERICHO", "PAOLO", "CARLO",   "NICOLE",
                                  "JASMINE",  "RAMON",   "LORNA", "EDGAR",   "CORAZON"};

void fill(const Database& db) {
    DbSession s(db);
    s.begin();
    for (int i = 0; i < Members; ++i) {
        const auto pick = [i](auto& list, int salt) {
            return QString::fromUtf8(
                list[(i * 7919 + salt * 104729 + i / 7) % int(std::size(list))]);
        };
        s.run(QStringLiteral("INSERT INTO members (CID, LN, FN, MN, ADR, Disc, Status, mdate, "
                             "Accuhrs) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
              {nextMemberId(i), pick(LastNames, 1), pick(FirstNames, 2), pick(LastNames, 3),
               QStringLiteral("%1 Rizal St., Brgy. %2, Quezon City").arg(i % 300).arg(i % 140),
               i % 10 == 0 ? 10 : 0, QStringLiteral("Active"), QDate(2010, 1, 1).addDays(i % 5000),
               i % 900});
    }
    s.commit();
}

struct Figures {
    double median;
    double worst;
};

Figures figures(std::vector<qint64> ns) {
    std::sort(ns.begin(), ns.end());
    return {double(ns[ns.size() / 2]) / 1e6, double(ns.back()) / 1e6};
}

// Each key of `text` typed in turn, `Rounds` times over; the time of every key.
qint64 threadCpuNs() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// The wall and processor time of each key, in nanoseconds. On a busy machine the wall
// time waits for the processor; the processor time is what the key itself costs.
struct Keys {
    std::vector<qint64> wall, cpu;
    void append(const Keys& other) {
        wall.insert(wall.end(), other.wall.begin(), other.wall.end());
        cpu.insert(cpu.end(), other.cpu.begin(), other.cpu.end());
    }
};

// Each key of `text` typed in turn, `Rounds` times over.
Keys typeEachKey(const QString& text, const std::function<void(const QString&)>& key) {
    Keys keys;
    QElapsedTimer t;
    for (int round = 0; round < Rounds; ++round) {
        key(QString()); // the box emptied again
        for (int n = 1; n <= text.size(); ++n) {
            const qint64 cpu = threadCpuNs();
            t.start();
            key(text.left(n));
            keys.wall.push_back(t.nsecsElapsed());
            keys.cpu.push_back(threadCpuNs() - cpu);
        }
    }
    return keys;
}

void print(const char* what, const Keys& read, const Keys& drawn) {
    const Figures w = figures(read.wall), c = figures(read.cpu), d = figures(drawn.wall);
    std::printf("  %-34s %6.2f %6.2f | %6.2f %6.2f | %6.2f %6.2f  (%zu keys)\n", what, w.median,
                w.worst, c.median, c.worst, d.median, d.worst, read.wall.size());
}

// The median of a few runs of `work`, each after `setup` (not timed), in milliseconds.
double medianMs(const std::function<void()>& setup, const std::function<void()>& work) {
    std::vector<qint64> ns;
    QElapsedTimer t;
    for (int i = 0; i < Rounds; ++i) {
        setup();
        t.start();
        work();
        ns.push_back(t.nsecsElapsed());
    }
    return figures(ns).median;
}

int run(bool madeByAnotherTool) {
    QTemporaryDir dir;
    const Database db{AppFolder(dir.path())};
    if (madeByAnotherTool) {
        QFile f(db.path());
        if (!f.open(QIODevice::WriteOnly))
            return 1;
        f.close();
        DbSession s(db);
        s.run(QStringLiteral("CREATE TABLE members (CID TEXT, LN TEXT, FN TEXT, MN TEXT, ADR "
                             "TEXT, Disc NUMBER, Status TEXT, mdate DATE, Accuhrs NUMBER)"));
    }
    db.prepare();
    fill(db);
    std::printf("\n%s: %d members, %.1f MB\n",
                madeByAnotherTool ? "a file made by another tool" : "a file the console made",
                Members, double(QFileInfo(db.path()).size()) / 1048576.0);
    {
        const auto page = memberQuery::page({MemberField::Name, QStringLiteral("x")}, {}, 101);
        DbSession s(db);
        auto q = s.run(QStringLiteral("EXPLAIN QUERY PLAN ") + page.sql, page.values);
        while (q.next())
            std::printf("  plan of a search: %s\n", qPrintable(q.value(3).toString()));
    }

    SilentPrompts prompts;
    MemberSearch search(db, prompts);
    search.open();
    // The search window's grid, as large as it opens.
    QTableView view;
    view.setModel(&search.list());
    view.verticalHeader()->hide();
    view.resize(660, 300);
    const int shownRows = view.viewport()->height() / view.verticalHeader()->defaultSectionSize();

    struct Typing {
        const char* what;
        MemberSearch::By by;
        QString text;
    };
    const Typing typings[] = {
        {"id ID-04217", MemberSearch::By::Id, QStringLiteral("ID-04217")},
        {"last name VILLANUEVA", MemberSearch::By::Name, QStringLiteral("VILLANUEVA")},
        {"last name DELA CRUZ", MemberSearch::By::Name, QStringLiteral("DELA CRUZ")},
        {"last name no one has (TAMBUNTING)", MemberSearch::By::Name, QStringLiteral("TAMBUNTING")},
    };
    std::printf(
        "  per key, in ms: the list read anew and the %d rows shown read (wall, then "
        "processor),\n  then the same and drawn by a grid (wall); median and worst of each\n",
        shownRows);
    Keys all, allDrawn;
    for (const Typing& t : typings) {
        search.setBy(t.by);
        const Keys read = typeEachKey(t.text, [&](const QString& text) {
            search.typed(text);
            auto& list = search.list();
            for (int r = 0; r < std::min(shownRows, list.rowCount()); ++r)
                for (int c = 0; c < list.columnCount(); ++c)
                    list.data(list.index(r, c));
        });
        const Keys drawn = typeEachKey(t.text, [&](const QString& text) {
            search.typed(text);
            view.grab();
        });
        print(t.what, read, drawn);
        all.append(read);
        allDrawn.append(drawn);
    }
    print("every key", all, allDrawn);

    // The register: every row has its place, so its operations count the rows they select.
    MemberListModel list(db, MemberListModel::Rows::Counted);
    const auto nothing = [] {
    };
    const auto browse = [&] {
        list.show({});
    };
    std::printf("  register: open %.2f ms, find last name \"an\" %.2f ms, find \"TAMB\" %.2f ms, "
                "to the last row %.2f ms (medians)\n",
                medianMs(nothing, browse),
                medianMs(nothing,
                         [&] {
                             list.show({MemberField::LastName, QStringLiteral("an")});
                         }),
                medianMs(nothing,
                         [&] {
                             list.show({MemberField::LastName, QStringLiteral("TAMB")});
                         }),
                medianMs(browse, [&] { list.rowAt(list.rowCount() - 1); }));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    try {
        return run(false) || run(true);
    } catch (const StoreError& e) {
        std::fprintf(stderr, "bench_members: %s\n", e.what());
        return 1;
    }
}
