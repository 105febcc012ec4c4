// A disk that fills up or turns read-only under a running console while a bill is saved:
// the revenue row and the session's close are written whole or not at all, the day's
// billing log keeps its earlier lines and gets no half line, no statement is left cut
// short, the operator is told what was not written, and the work goes on once the disk
// is back. The database may lie on another disk than the logs (linked from the folder).
#include "billing/bill_dialog.h"
#include "billing/board_rules.h"
#include "support/console_fixture.h"
#include "support/files.h"
#include "support/scratch_disk.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class FailingDiskTest : public QObject {
    Q_OBJECT

    // Stops the PC's session and clicks Save on its bill, printing on; the dialog, still
    // open when the bill was not saved.
    static std::unique_ptr<BillDialog> save(Console& console, int pc) {
        boardTick(console.board(), console.sessionParts(), console.rates());
        auto dialog =
            std::make_unique<BillDialog>(console, *stopSession(console.billingParts(), pc, pc));
        dialog->findChild<QCheckBox*>(u"chkPrint"_s)->setChecked(true);
        dialog->findChild<QPushButton*>(u"cmdsave"_s)->click();
        return dialog;
    }

private Q_SLOTS:
    void billOnAFailingDisk_data() {
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<bool>("databaseElsewhere");
        row("full", false, false);
        row("full, the database elsewhere", false, true);
        row("read-only", true, false);
        row("read-only, the database elsewhere", true, true);
    }
    void billOnAFailingDisk() {
        QFETCH(bool, readOnly);
        QFETCH(bool, databaseElsewhere);
        ScratchDisk disk(8);
        if (!disk.mounted())
            QSKIP(qPrintable(u"no disk of its own can be mounted here: "_s + disk.why()));
        QTemporaryDir elsewhere;
        const QString database = QDir(disk.path()).filePath(u"TarvoQRBDB.MDB"_s);
        if (databaseElsewhere) {
            QVERIFY(writeFile(elsewhere.filePath(u"TarvoQRBDB.MDB"_s), {}));
            QVERIFY(QFile::link(elsewhere.filePath(u"TarvoQRBDB.MDB"_s), database));
        }
        ConsoleFixture fx(disk.path());
        Console& console = fx.start("24=NOFPC\nPDF=PRINTTO\n");
        auto a = fx.probe().online(5), b = fx.probe().online(6);
        QVERIFY(a && b);
        QVERIFY(fx.probe().logIn(*a, 5, u"W-5:ANA"_s));
        // A name longer than what is left of the log's last block: the line cannot slip in.
        QVERIFY(fx.probe().logIn(*b, 6, u"W-6:"_s + QString(5000, u'N')));
        fx.clock.advance(30 * 60000);
        save(console, 5);
        const QString log = console.billingLog().path(fx.clock.today());
        const QByteArray logBefore = readFile(log);
        QCOMPARE(logBefore.count('\n'), 3);
        const QDir statements(disk.path() + u"/Statements"_s);
        const QStringList pdfsBefore = statements.entryList(QDir::Files);
        QCOMPARE(pdfsBefore.size(), 1);

        QVERIFY(readOnly ? disk.setReadOnly(true) : disk.fill());
        fx.prompts.clear();
        auto dialog = save(console, 6);
        const bool saved = databaseElsewhere;
        const QString told = fx.prompts.texts().join(u'\n');
        QCOMPARE(fx.scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), saved ? 2 : 1);
        QCOMPARE(fx.record(6).state, saved ? TerminalState::NotLogged : TerminalState::Billing);
        QCOMPARE(readFile(log), logBefore);
        QCOMPARE(statements.entryList(QDir::Files), pdfsBefore);
        if (saved) {
            QVERIFY2(told.contains(u"could not be added to the billing log "_s + log) &&
                         told.contains(u" 000000 09:00:00 00:30:00 0.00 None NNNN"_s) &&
                         told.contains(u"The billing statement cannot be written"_s),
                     qPrintable(told.left(500)));
        } else {
            QVERIFY2(told.contains(u"The bill of PC 6 was not saved"_s), qPrintable(told));
        }

        QVERIFY(readOnly ? disk.setReadOnly(false) : (disk.free(), true));
        if (!saved)
            dialog->findChild<QPushButton*>(u"cmdsave"_s)->click();
        QCOMPARE(fx.scalar(u"SELECT (SELECT count(*) FROM TmpRvnD) || ' ' || "
                           "(SELECT isout FROM templog WHERE aindex = 6)"_s)
                     .toString(),
                 u"2 -1"_s);
        QCOMPARE(fx.record(6).state, TerminalState::NotLogged);
        const QByteArray logAfter = readFile(log);
        QVERIFY(logAfter.startsWith(logBefore));
        QCOMPARE(logAfter.count('\n'), saved ? 3 : 4);
        QCOMPARE(statements.entryList(QDir::Files).size(), saved ? 1 : 2);
        QCOMPARE(sqliteTool(database, u"PRAGMA integrity_check"_s), u"ok"_s);
    }
};

QTEST_MAIN(FailingDiskTest)
#include "tst_failing_disk.moc"
