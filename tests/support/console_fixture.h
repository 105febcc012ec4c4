#pragma once

#include "base/clock.h"
#include "console/console.h"
#include "support/recording_prompts.h"

#include <QTemporaryDir>

#include <memory>

// A console on a fresh data folder with a manual clock and recorded prompts.
struct ConsoleFixture {
    QTemporaryDir dir;
    ManualClock clock{1000000, QDateTime(QDate(2026, 11, 15), QTime(9, 0))};
    RecordingPrompts prompts;
    std::unique_ptr<AppFolder> folder;
    std::unique_ptr<Console> console;

    ConsoleFixture() { folder = std::make_unique<AppFolder>(dir.path()); }
    // The console's data in another folder (a scratch disk, say).
    explicit ConsoleFixture(const QString& dataFolder) {
        folder = std::make_unique<AppFolder>(dataFolder);
    }

    // Settings with this many terminals (none: the file is left to be created).
    void writeSettings(const QByteArray& content);
    // openStorage + startUp on a free port, ODBC definition into the temporary folder.
    Console& start();
    // A statement on the console's database, for setting up and reading back.
    void exec(const QString& sql, const QVariantList& values = {});
    QVariant scalar(const QString& sql, const QVariantList& values = {});
    QString iniPath() const { return dir.filePath(QStringLiteral("odbc.ini")); }
};
