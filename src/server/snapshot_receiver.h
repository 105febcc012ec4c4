#pragma once

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>
#include <unordered_map>

class AppFolder;
class Clock;
class MessageLog;
class TerminalControl;
class TerminalRegistry;
class TerminalServer;
class TerminalTable;

// A terminal's screen snapshot, asked for with "SNPS" and received as a bitmap file in
// pieces: the first begins "BM6", the last ends with "Close" within its last ten bytes.
// Written to "TrmSnapShot.Bmp" in the data folder. Only a terminal asked within the last
// minute may send one, pieces count only from the connection that began it, and one
// larger than any screen is dropped with its file.
class SnapshotReceiver : public QObject {
    Q_OBJECT
public:
    static constexpr auto FileName = "TrmSnapShot.Bmp";
    static constexpr qint64 MostBytes = qint64(64) << 20;
    static constexpr qint32 RequestLifeMs = 60000;

    SnapshotReceiver(TerminalServer& server, TerminalControl& control,
                     const TerminalRegistry& registry, const TerminalTable& table, MessageLog& log,
                     const AppFolder& folder, const Clock& clock);

    // Sends "SNPS" to the PC; false when it has no connection.
    bool request(int pc);
    // A smaller bound, for tests.
    void setMostBytes(qint64 bytes) { mostBytes_ = bytes; }
    bool receiving() const { return file_ != nullptr; }

Q_SIGNALS:
    // "Receiving bytes... 16384 Bytes", then "Done.!"; `pc` is the PC it was asked of.
    void progress(const QString& text, int pc);
    // The file is whole; title: the customer details and " from IP : " the address.
    void received(const QString& path, const QString& title, int pc);

private:
    void onFirstPiece(int socket, const QByteArray& piece);
    void onPiece(int socket, const QByteArray& piece);
    bool write(const QByteArray& piece);
    void abandon(const QString& why, bool remove);
    void finish(int socket);

    TerminalServer& server_;
    TerminalControl& control_;
    const TerminalRegistry& registry_;
    const TerminalTable& table_;
    MessageLog& log_;
    const AppFolder& folder_;
    const Clock& clock_;
    struct Request {
        qint32 at = 0; // up-time counter of the request
        int pc = 0;
    };
    std::unordered_map<int, Request> requested_; // by socket
    std::unique_ptr<QFile> file_;
    int socket_ = 0; // the connection the snapshot under way comes from
    int pc_ = 0;     // and the PC it was asked of
    int pieces_ = 0;
    qint64 bytes_ = 0;
    qint64 mostBytes_ = MostBytes;
};
