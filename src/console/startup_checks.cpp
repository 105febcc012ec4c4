#include "console/startup_checks.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <sys/resource.h>

QString dataFolderProblem(const QString& folder) {
    const QString shown = QDir::toNativeSeparators(QDir(folder).absolutePath());
    const QString why =
        QStringLiteral("The console keeps its database, settings, billing logs and snapshot "
                       "there. Make the folder writable, or choose another with --data-dir, and "
                       "start the console again.");
    if (!QFileInfo(folder).isDir())
        return QStringLiteral("The data folder %1 does not exist. ").arg(shown) + why;
    // Only a real write tells: a folder may look writable and still refuse (a read-only
    // disk), or look read-only to the permissions and still take it.
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral(".tarvoqrb-write-test-XXXXXX")));
    if (!probe.open() || probe.write("ok") != 2 || !probe.flush())
        return QStringLiteral("The data folder %1 cannot be written (%2). ")
                   .arg(shown, probe.errorString()) +
               why;
    return QString();
}

void raiseOpenFilesLimit() {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur >= files.rlim_max)
        return;
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
}
