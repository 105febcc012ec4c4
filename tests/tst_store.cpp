// Storage and the files beside it: database, settings, report source, products, rates.
#include "billing/rates.h"
#include "store/database.h"
#include "store/printer_choice.h"
#include "store/product_list.h"
#include "store/report_source.h"
#include "store/settings_file.h"
#include "support/console_fixture.h"
#include "support/scratch_disk.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlRecord>
#include <QTest>

Q_DECLARE_METATYPE(PrinterChoice)
Q_DECLARE_METATYPE(PrintTarget)

namespace {

// One table row a line; arguments decay so string literals land in QString columns.
template <typename... T> void row(const char* name, T... values) {
    (QTest::newRow(name) << ... << values);
}

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
    p.write(sql.toUtf8());
    p.closeWriteChannel();
    if (p.waitForFinished() && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
        return true;
    qWarning("sqlite3: %s", p.readAllStandardError().constData());
    return false;
}

// The tables as plainly declared by someone building the file by hand: no collations, the
// types of the original database.
const QString ToolSchema = QStringLiteral(
    "CREATE TABLE members (CID TEXT, LN TEXT, FN TEXT, MN TEXT, ADR TEXT, Disc NUMBER, "
    "Status TEXT, mdate DATE, Accuhrs NUMBER);\n"
    "CREATE TABLE rates (RPH NUMBER, mina NUMBER, mint NUMBER);\n"
    "CREATE TABLE Services (Description TEXT, Amount NUMBER);\n"
    "CREATE TABLE Promos (ddtls TEXT, drange TEXT, dtype TEXT, Amount NUMBER);\n"
    "CREATE TABLE Templog (CID TEXT, StartTime TEXT, aindex NUMBER, isout YESNO, cdtls TEXT, "
    "datelog DATE, TickStart TEXT, BkTick TEXT, pcstat TEXT, stopwatch TEXT);\n"
    "CREATE TABLE SrvIPTable (TrmIP TEXT, PCno NUMBER, SKIndex NUMBER, Status YESNO);\n"
    "CREATE TABLE TmpRvnD (Rdate DATE, rtype TEXT, Amount NUMBER, CID TEXT, TID TEXT, "
    "StartT TEXT, EndT TEXT, Tcons TEXT, Orno NUMBER, rdesc TEXT, subamnt TEXT, qty NUMBER);\n"
    "CREATE TABLE sysusers (user TEXT, utype TEXT, keys TEXT);\n");

QString toolSchemaWithout(const QString& column) {
    return QString(ToolSchema).remove(QRegularExpression(", " + column + " \\w+"));
}

// A database file in a fresh folder, not yet prepared.
struct Store {
    QTemporaryDir dir;
    AppFolder folder{dir.path()};
    Database db{folder};

    // Runs a statement; the first row of its result, values joined by '|'.
    QString query(const QString& sql, const QVariantList& values = {}) {
        DbSession s(db);
        auto q = s.run(sql, values);
        QStringList out;
        if (q.next())
            for (int i = 0; i < q.record().count(); ++i)
                out << q.value(i).toString();
        return out.join('|');
    }
};

} // namespace

class StoreTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void newFileAndPreparedAgain() {
        Store s;
        s.db.prepare();
        // Every table with every column the console reads and writes (a missing one throws).
        static const QRegularExpression table(R"(CREATE TABLE (\w+) \((.*)\);)");
        for (const auto& m : table.globalMatch(ToolSchema))
            DbSession(s.db).run("SELECT " +
                                m.captured(2).remove(QRegularExpression(" [A-Z]+(?=,|$)")) +
                                " FROM " + m.captured(1));
        QCOMPARE(s.query("SELECT count(*), RPH, mina, mint FROM rates"), "1|20|10|30");
        // Text compares without regard to letter case in a file the console made.
        s.query("INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, 'SERVICE', 15)",
                {QDate(2026, 11, 15)});
        QCOMPARE(s.query("SELECT sum(amount) FROM tmprvnd WHERE RTYPE = ?", {"service"}), "15");
        // Prepared again, the file keeps what it holds; an emptied rates table stays empty.
        s.query("DELETE FROM rates");
        s.db.prepare();
        QCOMPARE(s.query("SELECT (SELECT count(*) FROM rates), count(*) FROM TmpRvnD"), "0|1");
        Rates rates;
        rates.setValues(33, Money::fromPesos(1), 2);
        QVERIFY(!rates.loadRates(s.db));
        QCOMPARE(rates.ratePerHour(), 33.0); // what was in force stays
        // Yes is written as -1; anything stored but zero or null reads as yes.
        s.query("INSERT INTO SrvIPTable (TrmIP, Status) VALUES ('a', ?), ('b', ?)",
                {yesNo(true), yesNo(false)});
        QCOMPARE(s.query("SELECT group_concat(Status) FROM SrvIPTable"), "-1,0");
        const QVariantList yes = {1, 255, 0.5, "-1"}, no = {0, "0", QVariant()};
        for (const QVariant& v : yes + no)
            QVERIFY2(isYes(v) == yes.contains(v), qPrintable(v.toString()));
    }

    void toolMadeFileOpensAndRestores() {
        ConsoleFixture f;
        const QString rows = QStringLiteral(
            "INSERT INTO rates VALUES (25, 12.5, 45);\n"
            "INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'Dela Cruz', 'Juan');\n"
            "INSERT INTO Services VALUES ('scan', 10), ('Burn CD', 40), ('print', 5), ('Xerox', 2);"
            "INSERT INTO Templog VALUES ('ID-00002', '08:30:00', 3, 0, 'ID-00002:Reyes, Ana',"
            " '2026-11-15', '1000000', '60000', 'PAU', '30');\n"
            "INSERT INTO Templog VALUES ('ID-00003', '23:10:00', 5, 0, 'ID-00003:Cruz, Ben',"
            " '2026-11-14', '900000', '0', 'LOG', 'U');\n");
        QVERIFY(runSqliteTool(Database(*f.folder).path(), ToolSchema + rows));

        Console& console = f.start();
        TerminalRecord r = console.terminals().at(3);
        QCOMPARE(
            QStringList({QString::number(r.logged), r.cid, r.stateCode(),
                         QString::number(r.startTick), QString::number(r.bankedMs), r.timeLimit}),
            QStringList({"1", "ID-00002", "PAU", "1000000", "60000", "30"}));
        QVERIFY(!console.terminals().at(5).logged); // yesterday's
        QCOMPARE(console.rates().ratePerHour(), 25.0);
        QCOMPARE(console.rates().minimumAmount(), Money::fromDouble(12.5));
        QCOMPARE(console.rates().minimumMinutes(), 45);
        QStringList names;
        for (const auto& sv : console.rates().services())
            names << sv.description;
        QCOMPARE(names, (QStringList{"Burn CD", "print", "scan", "Xerox"}));

        // Look-ups typed in another letter case find the row.
        r.cid = QStringLiteral("id-00002");
        r.bankedMs = 90000;
        QVERIFY(console.sessionLog().updateSessionRow(r));
        QCOMPARE(f.scalar("SELECT BkTick FROM templog WHERE aindex = 3").toInt(), 90000);
        console.server().handleMessage(1, "CHK id-00001:Dela Cruz, Juan;7");
        QVERIFY2(console.terminals().at(7).logged, qPrintable(console.messageLog().text()));
    }

    // A damaged file, another program's, or ours missing a column is refused, now and at the
    // next start, and left untouched; a missing column is named with its table.
    void foreignFileRefusedUntouched_data() {
        QTest::addColumn<QByteArray>("bytes"); // written as the file, or else:
        QTest::addColumn<QString>("sql");      // run through the sqlite3 tool
        QTest::addColumn<QString>("named");    // words the refusal must hold
        const QByteArray junk = QByteArray("SQLite format 3\0", 16) + QByteArray(4080, 'Z');
        row("sqlite header then junk", junk, QString(), "");
        row("text file", QByteArray("24=NOFPC\r\n1=PAGE\r\n"), QString(), "");
        row("another program's", QByteArray(), "CREATE TABLE photos (id, path);", "");
        row("no templog stopwatch", QByteArray(), toolSchemaWithout("stopwatch"),
            "Templog stopwatch");
        row("no registry socket", QByteArray(), toolSchemaWithout("SKIndex"), "SrvIPTable SKIndex");
        row("no users keys", QByteArray(), toolSchemaWithout("keys"), "sysusers keys");
    }
    void foreignFileRefusedUntouched() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, sql);
        QFETCH(QString, named);
        Store s;
        if (sql.isEmpty())
            writeFile(s.db.path(), bytes);
        else
            QVERIFY(runSqliteTool(s.db.path(), sql));
        const QByteArray before = readAll(s.db.path());
        for (int start = 0; start < 2; ++start) {
            try {
                s.db.prepare();
                QFAIL("accepted");
            } catch (const StoreError& e) {
                for (const QString& word : named.split(' ', Qt::SkipEmptyParts))
                    QVERIFY2(e.text().contains(word, Qt::CaseInsensitive), qPrintable(e.text()));
            }
            QCOMPARE(readAll(s.db.path()), before);
        }
        QCOMPARE(QDir(s.dir.path()).entryList(QDir::Files), QStringList{Database::FileName});
    }

    void settingsNofpc_data() {
        QTest::addColumn<QByteArray>("content"); // null: no file, one is made
        QTest::addColumn<int>("expected");       // -1: refused
        row("no file", QByteArray(), 24);
        row("not first line", QByteArray("1=PAGE\n12=NOFPC\nPlease don't Modify....\n"), 12);
        row("windows lines", QByteArray("16=NOFPC\r\n1=PAGE\r\n"), 16);
        row("no final newline", QByteArray("30=NOFPC"), 30);
        row("leading blank", QByteArray(" 30=NOFPC\n"), 30);
        row("largest", QByteArray("254=NOFPC\n"), 254);
        row("key at the very start", QByteArray("=NOFPC\n1=PAGE\n"), 24);
        row("empty file", QByteArray(""), 24);
        row("255", QByteArray("255=NOFPC\n"), -1);
    }
    void settingsNofpc() {
        QFETCH(QByteArray, content);
        QFETCH(int, expected);
        Store s;
        const QString path = s.folder.file("TarvoQRB.INI");
        if (!content.isNull())
            writeFile(path, content);
        if (expected < 0)
            QVERIFY_THROWS_EXCEPTION(SettingsError, SettingsFile::loadNofpc(s.folder));
        else
            QCOMPARE(SettingsFile::loadNofpc(s.folder), expected);
        if (content.isNull()) {
            QCOMPARE(
                QString::fromLatin1(readAll(path)).remove('\r').split('\n', Qt::SkipEmptyParts),
                (QStringList{"24=NOFPC", "1=PAGE", "Please don't Modify...."}));
            QCOMPARE(SettingsFile::loadNofpc(s.folder), 24); // the file it made reads back the same
        } else {
            QCOMPARE(readAll(path), content); // an existing file is only read
        }
    }

    // A text setting replaces its own line, or is added at the end in the file's line
    // ends; every other byte stays. `after` null: the value is refused, the file untouched.
    void settingsValue_data() {
        QTest::addColumn<QByteArray>("before"); // null: no file
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QString>("readBefore"); // null: the key is not set
        const QByteArray made = "24=NOFPC\n1=PAGE\nPlease don't Modify....\n";
        row("no file: made first", QByteArray(), "Laser", made + "Laser=PRINTER\n", QString());
        row("replaced in place, windows lines",
            QByteArray("24=NOFPC\r\nHP 1=PRINTER\r\nPlease don't Modify....\r\n"), "Laser",
            QByteArray("24=NOFPC\r\nLaser=PRINTER\r\nPlease don't Modify....\r\n"), "HP 1");
        row("added in the file's line ends", QByteArray("24=NOFPC\r\n1=PAGE\r\n"), "Laser",
            QByteArray("24=NOFPC\r\n1=PAGE\r\nLaser=PRINTER\r\n"), QString());
        row("last line without an end", QByteArray("24=NOFPC\n1=PAGE"), "Laser",
            QByteArray("24=NOFPC\n1=PAGE\nLaser=PRINTER\n"), QString());
        row("the last of two is read and replaced", QByteArray("A=PRINTER\nB=PRINTER\nx\n"),
            "Laser", QByteArray("A=PRINTER\nLaser=PRINTER\nx\n"), "B");
        row("like keys are other settings", QByteArray("A=PRINTERS\nB=MYPRINTER\n=PRINTER\n"),
            "Laser", QByteArray("A=PRINTERS\nB=MYPRINTER\n=PRINTER\nLaser=PRINTER\n"), QString());
        row("value holding the key", QByteArray("24=NOFPC\n"), "Lab=PRINTER",
            QByteArray("24=NOFPC\nLab=PRINTER=PRINTER\n"), QString());
        row("non-ASCII value", QByteArray("24=NOFPC\n"), "Impresora Peña",
            QByteArray("24=NOFPC\nImpresora Peña=PRINTER\n"), QString());
        row("empty value removes every line of it", QByteArray("A=PRINTER\n24=NOFPC\nB=PRINTER"),
            "", QByteArray("24=NOFPC\n"), "B");
        row("line break refused", QByteArray("A=PRINTER\n"), "Two\nlines", QByteArray(), "A");
    }
    void settingsValue() {
        QFETCH(QByteArray, before);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        QFETCH(QString, readBefore);
        Store s;
        const QString path = s.folder.file("TarvoQRB.INI");
        if (!before.isNull())
            writeFile(path, before);
        const QString key = QStringLiteral("PRINTER");
        QCOMPARE(SettingsFile::readValue(s.folder, key).value_or(QString()), readBefore);
        if (after.isNull()) {
            QVERIFY_THROWS_EXCEPTION(SettingsError,
                                     SettingsFile::writeValues(s.folder, {{key, value}}));
            QCOMPARE(readAll(path), before);
            return;
        }
        SettingsFile::writeValues(s.folder, {{key, value}});
        QCOMPARE(readAll(path), after);
        QCOMPARE(SettingsFile::readValue(s.folder, key).value_or(QString()), value);
        QCOMPARE(QDir(s.dir.path()).entryList(QDir::Files), QStringList{"TarvoQRB.INI"});
    }

    // A disk that fills up while the file is written leaves the old file whole.
    void settingsSurviveAFullDisk() {
        ScratchDisk disk;
        if (!disk.mounted())
            QSKIP(qPrintable("no disk of its own can be mounted here: " + disk.why()));
        const AppFolder folder(disk.path());
        const QByteArray before = "30=NOFPC\n1=PAGE\nHP=PRINTER\n";
        writeFile(folder.file("TarvoQRB.INI"), before);
        QVERIFY(disk.fill());
        QVERIFY_THROWS_EXCEPTION(
            SettingsError,
            SettingsFile::writeValues(folder, {{"PDFFOLDER", QString(8192, QLatin1Char('x'))}}));
        disk.free();
        QCOMPARE(readAll(folder.file("TarvoQRB.INI")), before);
        QCOMPARE(QDir(disk.path()).entryList(QDir::Files), QStringList{"TarvoQRB.INI"});
    }

    // The printer choice is four settings among the file's own lines; choosing again
    // replaces them, and what is no longer set leaves the file.
    void printerChoiceKept() {
        Store s;
        const QString path = s.folder.file("TarvoQRB.INI");
        writeFile(path, "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), PrinterChoice());
        QCOMPARE(PrinterChoice().pdfFolderIn(s.folder), s.dir.filePath("Statements"));

        PrinterChoice laser{PrinterChoice::Kind::Printer, "Counter Laser", "Receipts",
                            QSizeF(80, 200)};
        laser.save(s.folder);
        QCOMPARE(readAll(path), "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n"
                                "PRINTER=PRINTTO\r\nCounter Laser=PRINTER\r\n"
                                "Receipts=PDFFOLDER\r\n80x200=PAPER\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), laser);
        QCOMPARE(laser.pdfFolderIn(s.folder), s.dir.filePath("Receipts"));
        QCOMPARE(SettingsFile::loadNofpc(s.folder), 16);

        const PrinterChoice pdf{PrinterChoice::Kind::Pdf, "Counter Laser", {}, {}};
        pdf.save(s.folder);
        QCOMPARE(readAll(path), "16=NOFPC\r\n1=PAGE\r\nPlease don't Modify....\r\n"
                                "PDF=PRINTTO\r\nCounter Laser=PRINTER\r\n");
        QCOMPARE(PrinterChoice::load(s.folder), pdf);

        // Values a person typed wrongly read as not chosen.
        writeFile(path, "PRINTER=PRINTTO\nA4=PAPER\n");
        QCOMPARE(PrinterChoice::load(s.folder), PrinterChoice());
    }

    void printTarget_data() {
        using K = PrinterChoice::Kind;
        using R = PrintTarget::Route;
        QTest::addColumn<PrinterChoice>("choice");
        QTest::addColumn<QString>("defaultPrinter");
        QTest::addColumn<PrintTarget>("expected");
        const PrinterChoice none;
        const PrinterChoice front{K::Printer, "Front", {}, {}};
        const PrinterChoice gone{K::Printer, "Back Office", {}, {}};
        const PrinterChoice pdf{K::Pdf, "Front", {}, {}};
        row("chosen printer", front, "Lobby", PrintTarget{R::Printer, "Front"});
        row("chosen printer gone: not another", gone, "Lobby", PrintTarget{R::NoPrinter, {}});
        row("nothing chosen: the default", none, "Lobby", PrintTarget{R::Printer, "Lobby"});
        row("nothing chosen, no default", none, "", PrintTarget{R::NoPrinter, {}});
        row("PDF though printers exist", pdf, "Lobby", PrintTarget{R::Pdf, {}});
    }
    void printTarget() {
        QFETCH(PrinterChoice, choice);
        QFETCH(QString, defaultPrinter);
        QFETCH(PrintTarget, expected);
        const QStringList printers{"Lobby", "Front"};
        QCOMPARE(::printTarget(choice, printers, defaultPrinter), expected);
    }

    void printerOffers_data() {
        using K = PrinterChoice::Kind;
        QTest::addColumn<PrinterChoice>("choice");
        QTest::addColumn<QStringList>("printers");
        QTest::addColumn<QStringList>("captions");
        QTest::addColumn<int>("current");
        const QStringList two{"Lobby", "Front"};
        const QStringList offered{"Lobby (the system's default)", "Front", "PDF file"};
        row("nothing chosen: the default", PrinterChoice(), two, offered, 0);
        row("a printer chosen", PrinterChoice{K::Printer, "Front", {}, {}}, two, offered, 1);
        row("PDF chosen", PrinterChoice{K::Pdf, "Front", {}, {}}, two, offered, 2);
        row("chosen printer gone: shown, not replaced",
            PrinterChoice{K::Printer, "Back Office", {}, {}}, two,
            QStringList{"Lobby (the system's default)", "Front", "Back Office (not found)",
                        "PDF file"},
            2);
        row("no printer at all", PrinterChoice(), QStringList(), QStringList{"PDF file"}, 0);
    }
    void printerOffers() {
        QFETCH(PrinterChoice, choice);
        QFETCH(QStringList, printers);
        QFETCH(QStringList, captions);
        QFETCH(int, current);
        const PrinterOffers o =
            ::printerOffers(choice, printers, printers.isEmpty() ? QString() : printers.first());
        QStringList shown;
        for (const PrinterOffer& offer : o.offers)
            shown << offer.caption;
        QCOMPARE(shown, captions);
        QCOMPARE(o.current, current);
        // Each offer is the choice it says.
        QCOMPARE(o.offers.last().kind, PrinterChoice::Kind::Pdf);
        for (qsizetype i = 0; i + 1 < o.offers.size(); ++i)
            QVERIFY(captions[i].startsWith(o.offers[i].printer));
    }

    void reportSource() {
        QTemporaryDir dir;
        const AppFolder folder(dir.path() + QStringLiteral("/Tarvo QRB"));
        QCOMPARE(ReportSource::setReportConnection(folder),
                 "DSN=MS Access Database;DBQ=TarvoQRBDB.MDB;DefaultDir=" + dir.path() +
                     "/Tarvo QRB;DriverId=25;FIL=MS Access;MaxBufferSize=2048;PageTimeout=5;"
                     "PWD=TKvelm7342;UID=admin;");
        // The data source definition: ours written whole, once, every start; others kept.
        const QString ini = dir.filePath("odbc.ini");
        const QByteArray other = "[Other Source]\nDriver=Other\nDatabase=/srv/other.db\n";
        writeFile(ini, other + "\n[MS Access Database]\nOldValue=1\nDriverId=3\n");
        QString error;
        for (int start = 0; start < 2; ++start)
            QVERIFY(ReportSource::registerReportDataSource(folder, ini, &error));
        const QString text = QString::fromUtf8(readAll(ini));
        QCOMPARE(text.count("[MS Access Database]"), 1);
        const QStringList ours = text.section("[MS Access Database]\n", 1).split('\n');
        for (const char* line : {"DriverId=25", "FIL=MS Access;", "SafeTransaction=0", "UID="})
            QVERIFY2(ours.contains(line), qPrintable(text));
        QVERIFY(!text.contains("OldValue"));
        QVERIFY(text.startsWith(other));
    }

    void productList_data() {
        QTest::addColumn<QByteArray>("content"); // null: no file
        QTest::addColumn<QString>("expected");
        row("missing", QByteArray(), "None @ 0.00;End");
        row("empty", QByteArray(""), "End");
        row("no final newline", QByteArray("Coke @ 25.00\nChips"), "Coke @ 25.00;Chips;End");
        row("windows lines", QByteArray("a\r\nb\r\n"), "a;b;End");
        row("blank line kept", QByteArray("a\n\nb\n"), "a;;b;End");
        row("semicolon passes", QByteArray("x;y @ 1.00\n"), "x;y @ 1.00;End");
    }
    void productList() {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        Store s;
        if (!content.isNull())
            writeFile(s.folder.file("Products.LST"), content);
        QCOMPARE(ProductList::listText(s.folder), expected);
    }

    // Entry 0 is always there: "None Defined" alone, "No Discount" before real promos.
    void promosEntryZero() {
        Store s;
        s.db.prepare();
        Rates rates;
        const auto promos = [&] {
            rates.loadPromos(s.db);
            QStringList out;
            for (const auto& p : rates.promos())
                out << QStringList{p.details, p.range, p.type, p.amount.toDecimalText()}.join('|');
            return out;
        };
        QCOMPARE(promos(), QStringList{"None Defined|None|None|0.0000"});
        s.query("INSERT INTO Promos VALUES ('Happy hour', '1-3 PM', 'Per Hour', 5), "
                "('Loyalty', 'All year', 'None', 2.675)");
        QCOMPARE(promos(),
                 (QStringList{"No Discount|None|None|0.0000", "Happy hour|1-3 PM|Per Hour|5.0000",
                              "Loyalty|All year|None|2.6750"}));
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "tst_store.moc"
