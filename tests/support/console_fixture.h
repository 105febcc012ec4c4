#pragma once

#include "base/clock.h"
#include "console/console.h"
#include "support/recording_prompts.h"
#include "support/terminal_probe.h"

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
    ~ConsoleFixture() { probe_.reset(); } // its terminals go before the console

    // The console with its storage open (made on the first call), not yet started.
    Console& open();
    // open() and startUp on a free port, the ODBC definition into the temporary folder;
    // given settings are written first (none: the file is left to be created).
    Console& start(const QByteArray& settings = {});
    // Real terminals on the started console. The first call opens the probe's own
    // connection, so that it takes the first socket.
    TerminalProbe& probe();
    const TerminalRecord& record(int pc) const { return console->terminals().at(pc); }

    // A file in the data folder.
    bool writeFile(const QString& name, const QByteArray& content);
    // A statement on the console's database, for setting up and reading back.
    void exec(const QString& sql, const QVariantList& values = {});
    QVariant scalar(const QString& sql, const QVariantList& values = {});
    QString iniPath() const { return dir.filePath(QStringLiteral("odbc.ini")); }

private:
    std::unique_ptr<TerminalProbe> probe_;
};
