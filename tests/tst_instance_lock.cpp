#include "server/instance_lock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QThread>

// The other console is another process: this same program started with
// "--hold-lock DIR", which takes the lock, says so, and waits to be killed.
namespace {
int HoldLock(const QString& dir) {
    AppFolder folder(dir);
    InstanceLock lock(folder);
    if (!lock.tryLock())
        return 3;
    QTextStream(stdout) << "locked" << Qt::endl;
    for (;;)
        QThread::sleep(60);
}
} // namespace

class TestInstanceLock : public QObject {
    Q_OBJECT

    // Starts the other console and waits until it holds the lock.
    void startHolder(QProcess& holder, const QString& dir) {
        holder.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--hold-lock"), dir});
        QVERIFY(holder.waitForStarted());
        QVERIFY(holder.waitForReadyRead(30000));
        QCOMPARE(holder.readLine().trimmed(), QByteArray("locked"));
    }

private Q_SLOTS:
    void secondConsoleInSameProcessIsRefused() {
        QTemporaryDir dir;
        AppFolder folder(dir.path());
        InstanceLock first(folder);
        QVERIFY(first.tryLock());
        InstanceLock second(folder);
        QVERIFY(!second.tryLock());
        QVERIFY(!second.isLocked());
        first.unlock();
        QVERIFY(second.tryLock());
    }

    void runningConsoleRefusesAnotherAndDeadOneIsTakenOver() {
        QTemporaryDir dir;
        QProcess holder;
        startHolder(holder, dir.path());

        AppFolder folder(dir.path());
        // A console that has run for days holds an old lock file; age alone never
        // makes it stale.
        QFile lockFile(folder.file(QString::fromLatin1(InstanceLock::FileName)));
        QVERIFY(lockFile.open(QIODevice::ReadWrite));
        QVERIFY(lockFile.setFileTime(QDateTime::currentDateTime().addDays(-3),
                                     QFileDevice::FileModificationTime));
        lockFile.close();
        InstanceLock mine(folder);
        QVERIFY(!mine.tryLock());

        // Killed with no chance to clean up: the lock file stays behind.
        holder.kill();
        QVERIFY(holder.waitForFinished());
        QVERIFY(QFile::exists(folder.file(QString::fromLatin1(InstanceLock::FileName))));

        QVERIFY(mine.tryLock());
        InstanceLock another(folder);
        QVERIFY(!another.tryLock());
    }

    void oneLockPerFolder() {
        QTemporaryDir a;
        QTemporaryDir b;
        AppFolder folderA(a.path());
        AppFolder folderB(b.path());
        InstanceLock lockA(folderA);
        InstanceLock lockB(folderB);
        QVERIFY(lockA.tryLock());
        QVERIFY(lockB.tryLock());
    }

    void folderThatCannotHoldALockRefuses() {
        AppFolder missing(QStringLiteral("/nonexistent/tarvo/folder"));
        InstanceLock lock(missing);
        QVERIFY(!lock.tryLock());
    }
};

int main(int argc, char* argv[]) {
    if (argc == 3 && qstrcmp(argv[1], "--hold-lock") == 0) {
        QCoreApplication app(argc, argv);
        return HoldLock(QString::fromLocal8Bit(argv[2]));
    }
    QCoreApplication app(argc, argv);
    TestInstanceLock test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_instance_lock.moc"
