#pragma once

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>

class AppFolder;
class MessageLog;
class TerminalRegistry;
class TerminalServer;
class TerminalTable;

// A terminal's screen snapshot, received as a bitmap file in pieces: the first begins
// "BM6", the last ends with "Close" within its last ten bytes. Written to
// "TrmSnapShot.Bmp" in the data folder.
class SnapshotReceiver : public QObject {
    Q_OBJECT
public:
    static constexpr auto FileName = "TrmSnapShot.Bmp";
    static constexpr int PieceSize = 8192;

    SnapshotReceiver(TerminalServer& server, const TerminalRegistry& registry,
                     const TerminalTable& table, MessageLog& log, const AppFolder& folder);

Q_SIGNALS:
    // "Receiving bytes... 16384 Bytes", then "Done.!".
    void progress(const QString& text);
    // The file is whole; title: the customer details and " from IP : " the address.
    void received(const QString& path, const QString& title);

private:
    void onPiece(int socket, const QByteArray& piece, bool first);
    void finish(int socket);

    TerminalServer& server_;
    const TerminalRegistry& registry_;
    const TerminalTable& table_;
    MessageLog& log_;
    const AppFolder& folder_;
    std::unique_ptr<QFile> file_;
    int pieces_ = 0;
};
