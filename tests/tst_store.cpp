// Storage and the files beside it: the database file (created, checked, refused), the
// settings file, the report data source, the product list and the rate tables.
#include "billing/rates.h"
#include "server/session_log.h"
#include "server/terminal_server.h"
#include "store/database.h"
#include "store/product_list.h"
#include "store/report_source.h"
#include "store/settings_file.h"
#include "support/console_fixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    QCOMPARE(f.write(bytes), bytes.size());
}

// Runs SQL through the sqlite3 command-line tool, as another program would make a file.
bool runSqliteTool(const QString& path, const QString& sql) {
    QProcess p;
    p.start(QStringLiteral("sqlite3"), {QStringLiteral("-bail"), path});
    if (!p.waitForStarted())
        return false;
    p.write(sql.toUtf8());
    p.closeWriteChannel();
    if (!p.waitForFinished())
        return false;
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        qWarning("sqlite3: %s", p.readAllStandardError().constData());
        return false;
    }
    return true;
}

struct ToolTable {
    const char* name;
    QStringList columns; // "name TYPE"
};

// The tables and columns as plainly declared by someone building the file by hand:
// no collations, the types of the original database.
QList<ToolTable> toolTables() {
    return {
        {"members",
         {"CID TEXT", "LN TEXT", "FN TEXT", "MN TEXT", "ADR TEXT", "Disc NUMBER", "Status TEXT",
          "mdate DATE", "Accuhrs NUMBER"}},
        {"rates", {"RPH NUMBER", "mina NUMBER", "mint NUMBER"}},
        {"Services", {"Description TEXT", "Amount NUMBER"}},
        {"Promos", {"ddtls TEXT", "drange TEXT", "dtype TEXT", "Amount NUMBER"}},
        {"Templog",
         {"CID TEXT", "StartTime TEXT", "aindex NUMBER", "isout YESNO", "cdtls TEXT",
          "datelog DATE", "TickStart TEXT", "BkTick TEXT", "pcstat TEXT", "stopwatch TEXT"}},
        {"SrvIPTable", {"TrmIP TEXT", "PCno NUMBER", "SKIndex NUMBER", "Status YESNO"}},
        {"TmpRvnD",
         {"Rdate DATE", "rtype TEXT", "Amount NUMBER", "CID TEXT", "TID TEXT", "StartT TEXT",
          "EndT TEXT", "Tcons TEXT", "Orno NUMBER", "rdesc TEXT", "subamnt TEXT", "qty NUMBER"}},
        {"sysusers", {"user TEXT", "utype TEXT", "keys TEXT"}},
    };
}

QString toolSchema(const QString& skipTable = {}, const QString& skipColumn = {}) {
    QString sql;
    for (const auto& t : toolTables()) {
        QStringList cols;
        for (const auto& c : t.columns)
            if (!(QLatin1String(t.name) == skipTable &&
                  c.section(QLatin1Char(' '), 0, 0) == skipColumn))
                cols << c;
        sql +=
            QStringLiteral("CREATE TABLE %1 (%2);\n").arg(QLatin1String(t.name), cols.join(", "));
    }
    return sql;
}

int rowCount(const Database& db, const QString& table) {
    DbSession s(db);
    auto q = s.run(QStringLiteral("SELECT count(*) FROM ") + table);
    return q.next() ? q.value(0).toInt() : -1;
}

const QDate Today(2026, 11, 15);

} // namespace

class TstStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void newFileHasSchemaAndOneRatesRow();
    void anySpellingReachesTheSameTable();
    void preparedFileStaysAsItWas();
    void emptyRatesTableIsLeftEmpty();
    void toolMadeFileOpensAndRestores();
    void foreignFileRefusedUntouched_data();
    void foreignFileRefusedUntouched();
    void missingColumnRefusedByName_data();
    void missingColumnRefusedByName();
    void boundValuesAreNeverSql();
    void quotes_data();
    void quotes();
    void yesNoColumns_data();
    void yesNoColumns();
    void yesIsWrittenAsMinusOne();

    void settingsFileCreated();
    void settingsNofpc_data();
    void settingsNofpc();

    void reportConnectionText();
    void reportDataSourceIni();

    void productList_data();
    void productList();

    void loadRates();
    void loadServicesInDescriptionOrder();
    void loadPromos();
};

void TstStore::newFileHasSchemaAndOneRatesRow() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    QVERIFY(!QFile::exists(db.path()));
    db.prepare();
    QVERIFY(QFile::exists(db.path()));

    // Every table with every column the console reads and writes.
    DbSession s(db);
    for (const auto& t : toolTables()) {
        QStringList names;
        for (const auto& c : t.columns)
            names << QStringLiteral("\"%1\"").arg(c.section(QLatin1Char(' '), 0, 0));
        auto q =
            s.run(QStringLiteral("SELECT %1 FROM %2").arg(names.join(", "), QLatin1String(t.name)));
        QCOMPARE(q.record().count(), t.columns.size());
    }
    {
        auto q = s.run(QStringLiteral("SELECT RPH, mina, mint FROM rates"));
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toDouble(), 20.0);
        QCOMPARE(q.value(1).toDouble(), 10.0);
        QCOMPARE(q.value(2).toInt(), 30);
        QVERIFY(!q.next());
    }
    // Text columns compare without regard to letter case in a file the console made.
    s.run(QStringLiteral("INSERT INTO members (CID, LN) VALUES (?, ?)"), {"ID-00001", "SANTOS"});
    auto q = s.run(QStringLiteral("SELECT LN FROM members WHERE CID = ?"), {"id-00001"});
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toString(), QStringLiteral("SANTOS"));
}

void TstStore::anySpellingReachesTheSameTable() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    DbSession s(db);
    s.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, ?, ?)"),
          {Today, "SERVICE", 15.0});
    for (const char* spelling : {"TmpRvnD", "TmpRvnd", "tmprvnd", "TMPRVND"}) {
        auto q = s.run(QStringLiteral("SELECT sum(amount) FROM ") + QLatin1String(spelling) +
                           QStringLiteral(" WHERE RTYPE = ?"),
                       {"service"});
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toDouble(), 15.0);
    }
}

void TstStore::preparedFileStaysAsItWas() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    {
        DbSession s(db);
        s.run(QStringLiteral("UPDATE rates SET RPH = ?"), {25});
        s.run(QStringLiteral("INSERT INTO services (Description, Amount) VALUES (?, ?)"),
              {"Print", 5});
    }
    db.prepare();
    QCOMPARE(rowCount(db, "rates"), 1);
    QCOMPARE(rowCount(db, "services"), 1);
    DbSession s(db);
    auto q = s.run(QStringLiteral("SELECT RPH FROM rates"));
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toInt(), 25);
}

void TstStore::emptyRatesTableIsLeftEmpty() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    {
        DbSession s(db);
        s.run(QStringLiteral("DELETE FROM rates"));
    }
    db.prepare();
    QCOMPARE(rowCount(db, "rates"), 0);

    Rates rates;
    rates.RPH = 33;
    QVERIFY(!rates.LoadRates(db));
    QCOMPARE(rates.RPH, 33.0); // what was in force stays
}

void TstStore::toolMadeFileOpensAndRestores() {
    ConsoleFixture f;
    const Database db(*f.folder);
    const QString rows = QStringLiteral(
        "INSERT INTO rates VALUES (25, 12.5, 45);\n"
        "INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'Dela Cruz', 'Juan');\n"
        "INSERT INTO Services VALUES ('scan', 10), ('Burn CD', 40), ('print', 5), ('Xerox', 2);\n"
        "INSERT INTO Templog VALUES ('ID-00002', '08:30:00', 3, 0, 'ID-00002:Reyes, Ana',"
        " '2026-11-15', '1000000', '60000', 'PAU', '30');\n"
        "INSERT INTO Templog VALUES ('ID-00003', '23:10:00', 5, 0, 'ID-00003:Cruz, Ben',"
        " '2026-11-14', '900000', '0', 'LOG', 'U');\n");
    QVERIFY(runSqliteTool(db.path(), toolSchema() + rows));

    Console& console = f.start();
    QCOMPARE(f.clock.today(), Today);
    const TerminalRecord& r = console.terminals().at(3);
    QVERIFY(r.logged);
    QCOMPARE(r.cid, QStringLiteral("ID-00002"));
    QCOMPARE(r.pcstat, QStringLiteral("PAU"));
    QCOMPARE(r.TickStart, 1000000);
    QCOMPARE(r.BkTick, 60000);
    QCOMPARE(r.stopwatch, QStringLiteral("30"));
    QCOMPARE(console.terminals().at(5).pcstat, QStringLiteral("NLG"));

    const Rates& rates = console.rates();
    QCOMPARE(rates.RPH, 25.0);
    QCOMPARE(rates.mina, Money::fromDouble(12.5));
    QCOMPARE(rates.mint, 45);
    QStringList names;
    for (const auto& sv : rates.services())
        names << sv.Description;
    QCOMPARE(names, (QStringList{"Burn CD", "print", "scan", "Xerox"}));

    // Look-ups typed in another letter case find the row.
    TerminalRecord typed = r;
    typed.cid = QStringLiteral("id-00002");
    typed.BkTick = 90000;
    QVERIFY(console.sessionLog().UpdateSessionRow(typed));
    QCOMPARE(f.scalar(QStringLiteral("SELECT BkTick FROM templog WHERE aindex = 3")).toInt(),
             90000);

    // A member checking in at a terminal with the id in lower case is found.
    console.server().handleMessage(1, "CHK id-00001:Dela Cruz, Juan;7");
    QVERIFY2(console.terminals().at(7).logged, qPrintable(console.messageLog()));
}

void TstStore::foreignFileRefusedUntouched_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("random bytes") << "random";
    QTest::newRow("text file") << "text";
    QTest::newRow("sqlite header then junk") << "header";
    QTest::newRow("another program's database") << "other";
}

void TstStore::foreignFileRefusedUntouched() {
    QFETCH(QString, kind);
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    if (kind == QLatin1String("random")) {
        QByteArray bytes(8192, Qt::Uninitialized);
        QRandomGenerator gen(1066);
        for (auto& b : bytes)
            b = char(gen.bounded(256));
        writeFile(db.path(), bytes);
    } else if (kind == QLatin1String("text")) {
        writeFile(db.path(), "24=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n");
    } else if (kind == QLatin1String("header")) {
        QByteArray bytes("SQLite format 3");
        bytes.append('\0');
        bytes.append(QByteArray(4080, '\x5a'));
        writeFile(db.path(), bytes);
    } else {
        QVERIFY(runSqliteTool(db.path(), QStringLiteral("CREATE TABLE photos (id INTEGER PRIMARY "
                                                        "KEY, path TEXT);\nINSERT INTO photos "
                                                        "VALUES (1, 'beach.jpg');\n")));
    }
    const QByteArray before = readAll(db.path());
    QVERIFY(!before.isEmpty());

    QVERIFY_THROWS_EXCEPTION(StoreError, db.prepare());
    QCOMPARE(readAll(db.path()), before);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
    // Refused again, the same way, on the next start.
    QVERIFY_THROWS_EXCEPTION(StoreError, db.prepare());
    QCOMPARE(readAll(db.path()), before);
}

void TstStore::missingColumnRefusedByName_data() {
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("column");
    QTest::newRow("templog stopwatch") << "Templog"
                                       << "stopwatch";
    QTest::newRow("registry socket") << "SrvIPTable"
                                     << "SKIndex";
    QTest::newRow("revenue qty") << "TmpRvnD"
                                 << "qty";
    QTest::newRow("users keys") << "sysusers"
                                << "keys";
    QTest::newRow("members id") << "members"
                                << "CID";
}

void TstStore::missingColumnRefusedByName() {
    QFETCH(QString, table);
    QFETCH(QString, column);
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    QVERIFY(runSqliteTool(db.path(), toolSchema(table, column)));
    const QByteArray before = readAll(db.path());

    try {
        db.prepare();
        QFAIL("a table without a column the console uses was accepted");
    } catch (const StoreError& e) {
        QVERIFY2(e.text().contains(column, Qt::CaseInsensitive), qPrintable(e.text()));
        QVERIFY2(e.text().contains(table, Qt::CaseInsensitive), qPrintable(e.text()));
    }
    QCOMPARE(readAll(db.path()), before);
}

void TstStore::boundValuesAreNeverSql() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    const QString hostile = QStringLiteral("x'); DROP TABLE members; --");
    {
        DbSession s(db);
        s.run(QStringLiteral("INSERT INTO members (CID, LN) VALUES (?, ?)"), {"ID-00009", hostile});
    }
    QCOMPARE(rowCount(db, "members"), 1);
    DbSession s(db);
    auto q = s.run(QStringLiteral("SELECT LN FROM members WHERE CID = ?"), {"ID-00009"});
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toString(), hostile);
    // A statement that fails is a StoreError, not a crash, and leaves the row.
    QVERIFY_THROWS_EXCEPTION(StoreError, s.run(QStringLiteral("SELECT nosuch FROM members")));
}

void TstStore::quotes_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("refused");
    QTest::newRow("apostrophe") << "O'Brien" << true;
    QTest::newRow("only quotes") << "''" << true;
    QTest::newRow("at the end") << "ID-0001'" << true;
    QTest::newRow("plain") << "ID-00001" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("double quote") << "say \"hi\"" << false;
}

void TstStore::quotes() {
    QFETCH(QString, value);
    QFETCH(bool, refused);
    QCOMPARE(hasQuote(value), refused);
}

void TstStore::yesNoColumns_data() {
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("yes");
    QTest::newRow("-1") << QVariant(-1) << true;
    QTest::newRow("1") << QVariant(1) << true;
    QTest::newRow("255") << QVariant(255) << true;
    QTest::newRow("fraction") << QVariant(0.5) << true;
    QTest::newRow("text -1") << QVariant(QStringLiteral("-1")) << true;
    QTest::newRow("0") << QVariant(0) << false;
    QTest::newRow("text 0") << QVariant(QStringLiteral("0")) << false;
    QTest::newRow("null") << QVariant() << false;
}

void TstStore::yesNoColumns() {
    QFETCH(QVariant, stored);
    QFETCH(bool, yes);
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    DbSession s(db);
    s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, Status) VALUES (?, ?)"),
          {"10.0.0.7", stored});
    auto q = s.run(QStringLiteral("SELECT Status FROM SrvIPTable"));
    QVERIFY(q.next());
    QCOMPARE(isYes(q.value(0)), yes);
}

void TstStore::yesIsWrittenAsMinusOne() {
    QCOMPARE(yesNo(true).toInt(), -1);
    QCOMPARE(yesNo(false).toInt(), 0);
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    DbSession s(db);
    s.run(QStringLiteral("INSERT INTO SrvIPTable (TrmIP, Status) VALUES (?, ?)"),
          {"10.0.0.8", yesNo(true)});
    auto q = s.run(QStringLiteral("SELECT count(*) FROM SrvIPTable WHERE Status = -1"));
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toInt(), 1);
}

void TstStore::settingsFileCreated() {
    QTemporaryDir dir;
    const AppFolder folder(dir.path());
    QCOMPARE(SettingsFile::LoadNofpc(folder), 24);
    QFile f(folder.file(QStringLiteral("TarvoQRB.INI")));
    QVERIFY(f.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList lines =
        QString::fromLatin1(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines, (QStringList{"24=NOFPC", "1=PAGE", "Please don't Modify...."}));
    // Read again, the file it made gives the same.
    QCOMPARE(SettingsFile::LoadNofpc(folder), 24);
}

void TstStore::settingsNofpc_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("expected"); // -1: refused

    QTest::newRow("48") << QByteArray("48=NOFPC\n1=PAGE\n") << 48;
    QTest::newRow("not first line")
        << QByteArray("1=PAGE\n12=NOFPC\nPlease don't Modify....\n") << 12;
    QTest::newRow("windows lines") << QByteArray("16=NOFPC\r\n1=PAGE\r\n") << 16;
    QTest::newRow("no final newline") << QByteArray("30=NOFPC") << 30;
    QTest::newRow("leading blank") << QByteArray(" 30=NOFPC\n") << 30;
    QTest::newRow("largest") << QByteArray("254=NOFPC\n") << 254;
    QTest::newRow("key at the very start") << QByteArray("=NOFPC\n1=PAGE\n") << 24;
    QTest::newRow("no such line") << QByteArray("1=PAGE\nPlease don't Modify....\n") << 24;
    QTest::newRow("empty file") << QByteArray() << 24;
    QTest::newRow("255") << QByteArray("255=NOFPC\n") << -1;
    QTest::newRow("300") << QByteArray("300=NOFPC\n") << -1;
    QTest::newRow("-1") << QByteArray("-1=NOFPC\n") << -1;
}

void TstStore::settingsNofpc() {
    QFETCH(QByteArray, content);
    QFETCH(int, expected);
    QTemporaryDir dir;
    const AppFolder folder(dir.path());
    const QString path = folder.file(QStringLiteral("TarvoQRB.INI"));
    writeFile(path, content);
    if (expected < 0)
        QVERIFY_THROWS_EXCEPTION(SettingsError, SettingsFile::LoadNofpc(folder));
    else
        QCOMPARE(SettingsFile::LoadNofpc(folder), expected);
    QCOMPARE(readAll(path), content); // an existing file is only read
}

void TstStore::reportConnectionText() {
    QTemporaryDir dir;
    const AppFolder folder(dir.path() + QStringLiteral("/Tarvo QRB"));
    QCOMPARE(ReportSource::SetReportConnection(folder),
             QStringLiteral("DSN=MS Access Database;DBQ=TarvoQRBDB.MDB;DefaultDir=") + dir.path() +
                 QStringLiteral("/Tarvo QRB;DriverId=25;FIL=MS Access;MaxBufferSize=2048;"
                                "PageTimeout=5;PWD=TKvelm7342;UID=admin;"));
}

void TstStore::reportDataSourceIni() {
    QTemporaryDir dir;
    const AppFolder folder(dir.path());
    const QString ini = dir.filePath(QStringLiteral("odbc.ini"));
    writeFile(ini, "[Other Source]\nDriver=Other\nDatabase=/srv/other.db\n\n"
                   "[MS Access Database]\nOldValue=1\nDriverId=3\n\n[Last]\nKey=Value\n");

    QString error;
    QVERIFY2(ReportSource::RegisterReportDataSource(folder, ini, &error), qPrintable(error));
    const QByteArray once = readAll(ini);

    QMap<QString, QMap<QString, QString>> sections;
    QString current;
    for (const QString& line : QString::fromUtf8(once).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1Char('['))) {
            current = line.mid(1, line.indexOf(QLatin1Char(']')) - 1);
            QVERIFY2(!sections.contains(current), qPrintable("section twice: " + current));
            sections[current];
        } else if (line.contains(QLatin1Char('='))) {
            sections[current][line.section(QLatin1Char('='), 0, 0)] =
                line.section(QLatin1Char('='), 1);
        }
    }
    const auto ours = sections.value(QStringLiteral("MS Access Database"));
    QCOMPARE(ours.value(QStringLiteral("DriverId")), QStringLiteral("25"));
    QCOMPARE(ours.value(QStringLiteral("FIL")), QStringLiteral("MS Access;"));
    QCOMPARE(ours.value(QStringLiteral("SafeTransaction")), QStringLiteral("0"));
    QVERIFY(ours.contains(QStringLiteral("UID")));
    QCOMPARE(ours.value(QStringLiteral("UID")), QString());
    QVERIFY(!ours.contains(QStringLiteral("OldValue")));
    QCOMPARE(sections.value(QStringLiteral("Other Source")).value(QStringLiteral("Database")),
             QStringLiteral("/srv/other.db"));
    QCOMPARE(sections.value(QStringLiteral("Last")).value(QStringLiteral("Key")),
             QStringLiteral("Value"));

    // Every start writes it again; the second start changes nothing.
    QVERIFY(ReportSource::RegisterReportDataSource(folder, ini, &error));
    QCOMPARE(readAll(ini), once);

    // A missing file is made.
    const QString fresh = dir.filePath(QStringLiteral("fresh.ini"));
    QVERIFY(ReportSource::RegisterReportDataSource(folder, fresh, &error));
    QVERIFY(readAll(fresh).contains("[MS Access Database]"));
    // A folder that cannot hold it is reported, not a crash.
    QVERIFY(!ReportSource::RegisterReportDataSource(folder, dir.filePath("no/such/dir/odbc.ini"),
                                                    &error));
    QVERIFY(!error.isEmpty());
}

void TstStore::productList_data() {
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");
    QTest::newRow("missing") << false << QByteArray() << "None @ 0.00;End";
    QTest::newRow("empty") << true << QByteArray() << "End";
    QTest::newRow("two lines") << true << QByteArray("Coke @ 25.00\nChips @ 15.50\n")
                               << "Coke @ 25.00;Chips @ 15.50;End";
    QTest::newRow("no final newline")
        << true << QByteArray("Coke @ 25.00\nChips @ 15.50") << "Coke @ 25.00;Chips @ 15.50;End";
    QTest::newRow("windows lines") << true << QByteArray("a\r\nb\r\n") << "a;b;End";
    QTest::newRow("blank line kept") << true << QByteArray("a\n\nb\n") << "a;;b;End";
    QTest::newRow("semicolon passes") << true << QByteArray("x;y @ 1.00\n") << "x;y @ 1.00;End";
}

void TstStore::productList() {
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    const AppFolder folder(dir.path());
    if (exists)
        writeFile(folder.file(QStringLiteral("Products.LST")), content);
    QCOMPARE(ProductList::ListText(folder), expected);
}

void TstStore::loadRates() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    Rates rates;
    rates.RPH = 1;
    rates.mint = 1;
    QVERIFY(rates.LoadRates(db));
    QCOMPARE(rates.RPH, 20.0);
    QCOMPARE(rates.mina, Money::fromPesos(10));
    QCOMPARE(rates.mint, 30);

    {
        DbSession s(db);
        s.run(QStringLiteral("UPDATE rates SET RPH = ?, mina = ?, mint = ?"), {25.5, 12.345, 45});
    }
    QVERIFY(rates.LoadRates(db));
    QCOMPARE(rates.RPH, 25.5);
    QCOMPARE(rates.mina, Money::fromUnits(123450));
    QCOMPARE(rates.mint, 45);
}

void TstStore::loadServicesInDescriptionOrder() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    {
        DbSession s(db);
        for (const auto& [name, amount] :
             {std::pair{"scan", 10.0}, {"Burn CD", 40.0}, {"print", 5.0}, {"Xerox", 2.5}})
            s.run(QStringLiteral("INSERT INTO Services (Description, Amount) VALUES (?, ?)"),
                  {QString::fromLatin1(name), amount});
    }
    Rates rates;
    rates.LoadServices(db);
    QStringList names;
    QList<double> amounts;
    for (const auto& sv : rates.services()) {
        names << sv.Description;
        amounts << sv.Amount;
    }
    QCOMPARE(names, (QStringList{"Burn CD", "print", "scan", "Xerox"}));
    QCOMPARE(amounts, (QList<double>{40.0, 5.0, 10.0, 2.5}));

    // Loading again replaces the list rather than adding to it.
    {
        DbSession s(db);
        s.run(QStringLiteral("DELETE FROM services WHERE Description = ?"), {"SCAN"});
    }
    rates.LoadServices(db);
    QCOMPARE(rates.services().size(), 3);
}

void TstStore::loadPromos() {
    QTemporaryDir dir;
    Database db{AppFolder(dir.path())};
    db.prepare();
    Rates rates;
    rates.LoadPromos(db);
    QCOMPARE(rates.promos().size(), 1);
    QCOMPARE(rates.promos().at(0).ddtls, QStringLiteral("None Defined"));
    QCOMPARE(rates.promos().at(0).dtype, QStringLiteral("None"));

    {
        DbSession s(db);
        const QList<QVariantList> rows = {{"Happy hour", "1-3 PM", "Per Hour", 5.0},
                                          {"Student", "Weekdays", "Fix", 0.0},
                                          {"Loyalty", "All year", "None", 2.675}};
        for (const auto& row : rows)
            s.run(QStringLiteral(
                      "INSERT INTO Promos (ddtls, drange, dtype, Amount) VALUES (?, ?, ?, ?)"),
                  row);
    }
    rates.LoadPromos(db);
    const auto& p = rates.promos();
    QCOMPARE(p.size(), 4);
    QCOMPARE(p.at(0).ddtls, QStringLiteral("No Discount"));
    QCOMPARE(p.at(0).drange, QStringLiteral("None"));
    QCOMPARE(p.at(0).dtype, QStringLiteral("None"));
    QCOMPARE(p.at(0).Amount, Money());
    QCOMPARE(p.at(1).ddtls, QStringLiteral("Happy hour"));
    QCOMPARE(p.at(1).drange, QStringLiteral("1-3 PM"));
    QCOMPARE(p.at(1).dtype, QStringLiteral("Per Hour"));
    QCOMPARE(p.at(1).Amount, Money::fromPesos(5));
    QCOMPARE(p.at(2).dtype, QStringLiteral("Fix"));
    QCOMPARE(p.at(3).ddtls, QStringLiteral("Loyalty"));
    QCOMPARE(p.at(3).Amount, Money::fromUnits(26750));
}

QTEST_GUILESS_MAIN(TstStore)
#include "tst_store.moc"
