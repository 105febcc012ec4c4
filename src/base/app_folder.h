#pragma once

#include <QDir>
#include <QString>

// The folder that holds the database, the settings file, the product list, the billing
// logs and the snapshot.
class AppFolder {
public:
    explicit AppFolder(const QString& path) : dir_(QDir(path).absolutePath()) {}

    // The folder path with no trailing separator.
    QString path() const { return dir_; }
    QString file(const QString& name) const { return dir_ + QLatin1Char('/') + name; }

    // The program's own folder when it can be written to, else the per-user data folder.
    static QString defaultPath();

private:
    QString dir_;
};
