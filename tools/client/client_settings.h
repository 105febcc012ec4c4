#pragma once

#include <QHostAddress>
#include <QString>
#include <QStringList>

class QCommandLineParser;

// What the client needs to know about its café: where the console is, which PC this
// is, and what it may do to the machine. Read from an INI file and the command line,
// which wins over the file.
//
//   [Console]
//   Address=192.168.1.10
//   Port=1066
//   PC=7
//   [Client]
//   CafeName=Tarvo Internet Cafe
//   AllowPowerActions=false
struct ClientSettings {
    static constexpr auto FileName = "tarvoqrb-client.ini";

    QString consoleAddress;
    quint16 port = 1066;
    int pc = 0;                // 1..254; 0 until set, -1 when set wrong
    QHostAddress localAddress; // connect from this address (several clients on one machine)
    QString cafeName = QStringLiteral("Internet Café");
    bool allowPowerActions = false; // log off, restart, shut down when the console says so
    int messageGapMs = 100;         // between two messages, so the console reads two
    bool windowed = false;          // no full screen and no grab: for trying the client out
    // Where the session is kept for a client started again; empty: nowhere. By default
    // in the session's runtime folder, which the machine empties when it starts.
    QString stateFile = defaultStateFile();
    static QString defaultStateFile();
    QString file; // the INI file read, empty when none

    // What keeps the client from reaching the console, one sentence each; empty when the
    // settings are usable.
    QStringList problems;
    bool usable() const { return problems.isEmpty(); }

    // The INI files looked at, in order, when none is named: beside the program, in the
    // user's configuration folder, and the machine's (/etc).
    static QStringList candidateFiles();
    // Reads `path` (or the first candidate that exists, when empty) and then the options
    // the parser found. The parser must have had addOptions() called on it.
    static ClientSettings load(const QCommandLineParser& parser);
    static void addOptions(QCommandLineParser& parser);
    // Just the file.
    static ClientSettings fromFile(const QString& path);
};
