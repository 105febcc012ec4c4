#pragma once

#include <QElapsedTimer>
#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <optional>

class TerminalClient;

// The commands of the interactive and scripted modes, run on one terminal: a line
// each, such as "log ID:NAME;PC", "snap" or "expect Log Successful".
class ScriptRunner {
public:
    enum class Result { Go, Quit, Failed };

    // `gapMs` is the least time between two sends; `helpText` is what "help" prints.
    ScriptRunner(TerminalClient& client, int timeoutMs, int gapMs, QString helpText);

    Result run(const QString& line);

    // Connects, waits until the console accepts the connection and, when `identify`
    // is set, identifies the PC; false, said, when the console does not answer.
    bool handshake(const QString& host, quint16 port, const QHostAddress& bind, bool identify);
    // Runs the lines in order and closes the connection. The exit status: 0, or 1 at the
    // first expectation not met (the lines after it are not run).
    int runScript(const QStringList& lines);
    // Runs the lines typed on standard input until "quit", the end of the input or the
    // console closing the connection.
    int runInteractive();

    // The lines of the script file, or of standard input when there is no file; none,
    // said on standard error, when it cannot be read.
    static std::optional<QStringList> readScript(const std::optional<QString>& path);

private:
    void keepApart();
    void sendProcessList(const QString& items);
    void sendSnapshot();
    Result expect(const QString& start);
    void finishSnapshot();

    TerminalClient& client_;
    int timeoutMs_;
    int gapMs_;
    QString helpText_;
    QElapsedTimer lastSend_;
};
