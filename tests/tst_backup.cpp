// The database backup: where each day's copy goes, what it holds, and what is told when it fails.
#include "store/backup.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/scratch_disk.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString Title = u"User Back-Up Method"_s;
const QDate Today(2026, 11, 15);

// The rows of the revenue table in a copy, opened as the console opens its database.
int revenueRows(const QString& folder) {
    const AppFolder f(folder);
    Database copy(f);
    copy.prepare(); // refuses a damaged file or one without the console's tables
    DbSession s(copy);
    auto q = s.run(u"SELECT count(*) FROM TmpRvnD"_s);
    return q.next() ? q.value(0).toInt() : -1;
}

} // namespace

class BackupTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<QTemporaryDir> home;

    const Database& database() { return fx->console->database(); }
    void sales(int count) {
        for (int i = 0; i < count; ++i)
            fx->exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES (?, 'SERVICE', ?)"_s,
                     {Today, 10 + i});
    }
    QString folderOf(const QDate& day) { return Backup::datedFolder(home->path(), day); }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->open();
        home = std::make_unique<QTemporaryDir>();
        qputenv("HOMEDRIVE", home->path().toLocal8Bit());
        sales(3);
    }
    void cleanup() {
        qunsetenv("HOMEDRIVE");
        fx.reset();
        home.reset();
    }

    void homeDrive() {
        const QDate day(2026, 11, 5);
        qputenv("HOMEDRIVE", "C:");
        QCOMPARE(Backup::datedFolder(Backup::homeDrive(), day), u"C:/TarvoQRBDB/11_05_2026"_s);
        qunsetenv("HOMEDRIVE");
        QCOMPARE(Backup::datedFolder(Backup::homeDrive(), day),
                 QDir::homePath() + u"/TarvoQRBDB/11_05_2026"_s);
    }

    void secondCopy_data() {
        QTest::addColumn<QDate>("second");
        QTest::addColumn<bool>("interrupted");  // a half-written copy is left where it goes
        QTest::addColumn<QList<int>>("copies"); // rows in the first day's copy, then the second's
        QTest::newRow("the same day replaces the first") << Today << false << QList<int>{5};
        QTest::newRow("the next day keeps the day before, clearing an interrupted copy")
            << QDate(2026, 11, 16) << true << QList<int>{3, 5};
    }
    void secondCopy() {
        QFETCH(QDate, second);
        QFETCH(bool, interrupted);
        QFETCH(QList<int>, copies);
        fx->prompts.clear();
        backupDatabase(database(), Today, fx->prompts, Title);
        QCOMPARE(fx->prompts.texts(), QStringList{u"Database file is successfully written to \r"_s +
                                                  QDir::toNativeSeparators(folderOf(Today))});
        QCOMPARE(fx->prompts.last()->title, Title);
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Information);
        QCOMPARE(revenueRows(folderOf(Today)), 3);

        sales(2);
        if (interrupted) {
            QVERIFY(QDir().mkpath(folderOf(second)));
            QVERIFY(writeFile(folderOf(second) + u"/TarvoQRBDB.MDB.new"_s, "half a database"));
        }
        const Backup::Outcome again = Backup::makeCopy(database(), home->path(), second);
        QVERIFY2(again.ok, qPrintable(again.error));
        QList<int> found;
        for (const QDate& day : {Today, Today.addDays(1)})
            if (QFileInfo::exists(folderOf(day)))
                found << revenueRows(folderOf(day));
        QCOMPARE(found, copies);
        // One file a day, named as the database is: nothing half-written left beside it.
        QCOMPARE(QDir(folderOf(second)).entryList(QDir::Files), QStringList{"TarvoQRBDB.MDB"});
        sales(1); // the console goes on with its own file
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), 6);
    }

    void theCopyHoldsWhatWasCommitted() {
        // Another program is in the middle of writing a sale when the copy is taken.
        const QString name = u"other-program"_s;
        {
            QSqlDatabase other = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
            other.setDatabaseName(database().path());
            QVERIFY(other.open());
            QVERIFY(other.transaction());
            QVERIFY(QSqlQuery(other).exec(u"INSERT INTO TmpRvnD (Rdate, rtype, Amount) VALUES "
                                          "('2026-11-15', 'SERVICE', 99)"_s));
            const Backup::Outcome o = Backup::makeCopy(database(), home->path(), Today);
            QVERIFY2(o.ok, qPrintable(o.error));
            QVERIFY(other.commit());
        }
        QSqlDatabase::removeDatabase(name);
        QCOMPARE(revenueRows(folderOf(Today)), 3);
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), 4);
    }

    void failuresAreToldAndKeepTheEarlierCopy_data() {
        QTest::addColumn<QString>("cause");
        QTest::addColumn<QString>("told");
        QTest::newRow("a file where the folder goes") << u"file"_s << u"cannot be made"_s;
        QTest::newRow("the database is gone") << u"gone"_s << u"is missing"_s;
        QTest::newRow("the disk is full") << u"full"_s << u"could not be copied"_s;
    }
    void failuresAreToldAndKeepTheEarlierCopy() {
        QFETCH(QString, cause);
        QFETCH(QString, told);
        std::unique_ptr<ScratchDisk> disk;
        if (cause == u"full"_s) {
            disk = std::make_unique<ScratchDisk>(8);
            if (!disk->mounted())
                QSKIP(qPrintable(u"no disk of its own can be mounted here: "_s + disk->why()));
            qputenv("HOMEDRIVE", disk->path().toLocal8Bit());
        }
        const QString drive = disk ? disk->path() : home->path();
        const QString folder = Backup::datedFolder(drive, Today);
        if (cause == u"file"_s) {
            QVERIFY(writeFile(drive + u"/TarvoQRBDB"_s, "not a folder"));
        } else { // an earlier copy of the day, then more sales
            QVERIFY(Backup::makeCopy(database(), drive, Today).ok);
            sales(50);
            QVERIFY(cause == u"gone"_s ? QFile::remove(database().path()) : disk->fill());
        }
        fx->prompts.clear();
        backupDatabase(database(), Today, fx->prompts, Title);
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY2(fx->prompts.last()->text.contains(told), qPrintable(fx->prompts.last()->text));
        QCOMPARE(fx->prompts.last()->title, Title);
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Critical);
        if (cause != u"file"_s) {
            if (disk)
                disk->free();
            QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{"TarvoQRBDB.MDB"});
            QCOMPARE(revenueRows(folder), 3);
        }
    }
};

QTEST_GUILESS_MAIN(BackupTest)
#include "tst_backup.moc"
