#include "base/app_folder.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

QString AppFolder::defaultPath() {
    const QString own = QCoreApplication::applicationDirPath();
    if (!own.isEmpty() && QFileInfo(own).isWritable())
        return own;
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(data);
    return data;
}
