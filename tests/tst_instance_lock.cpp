#include "console/instance_lock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QThread>

using namespace Qt::StringLiterals;

class InstanceLockTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void secondConsoleIsRefusedUntilTheFirstLets() {
        QTemporaryDir dir, other;
        InstanceLock first{AppFolder(dir.path())}, second{AppFolder(dir.path())};
        QVERIFY(first.tryLock());
        QVERIFY(!second.tryLock());
        QVERIFY(!second.isLocked());
        QVERIFY(InstanceLock(AppFolder(other.path())).tryLock()); // one lock per folder
        first.unlock();
        QVERIFY(second.tryLock());
        QVERIFY(!InstanceLock(AppFolder(u"/nonexistent/tarvo/folder"_s)).tryLock());
    }

    void runningConsoleRefusesAnotherAndKilledOneIsTakenOver() {
        QTemporaryDir dir;
        QProcess holder; // another console: this program with "--hold-lock DIR"
        holder.start(QCoreApplication::applicationFilePath(), {u"--hold-lock"_s, dir.path()});
        QVERIFY(holder.waitForReadyRead(30000));
        QCOMPARE(holder.readLine(), "locked\n");
        QFile lockFile(dir.filePath(QString::fromLatin1(InstanceLock::FileName)));
        // A console that has run for days holds an old lock file; age alone never makes it stale.
        QVERIFY(lockFile.open(QIODevice::ReadWrite));
        QVERIFY(lockFile.setFileTime(QDateTime::currentDateTime().addDays(-3),
                                     QFileDevice::FileModificationTime));
        InstanceLock mine{AppFolder(dir.path())};
        QVERIFY(!mine.tryLock());

        // Killed with no chance to clean up: the lock file stays behind, naming a dead process.
        holder.kill();
        QVERIFY(holder.waitForFinished());
        QVERIFY(lockFile.exists());
        QVERIFY(mine.tryLock());
        QVERIFY(!InstanceLock(AppFolder(dir.path())).tryLock());
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--hold-lock") == 0) {
        InstanceLock lock{AppFolder(QString::fromLocal8Bit(argv[2]))};
        QTextStream(stdout) << (lock.tryLock() ? "locked" : "refused") << Qt::endl;
        for (;;)
            QThread::sleep(60);
    }
    InstanceLockTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_instance_lock.moc"
