#include "terminal_client.h"

#include "protocol/protocol.h"
#include "protocol/splitter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <vector>

#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString currentUserName() {
    if (const passwd* pw = getpwuid(getuid()))
        return QString::fromLocal8Bit(pw->pw_name);
    return qEnvironmentVariable("USER");
}

QImage drawnPicture() {
    // No screen to grab: a picture that still changes from one snapshot to the next.
    QImage image(1024, 600, QImage::Format_RGB32);
    const int shift = int(QDateTime::currentMSecsSinceEpoch() / 1000 % 256);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = qRgb((x + shift) & 0xff, (y * 255) / image.height(), (x ^ y) & 0xff);
    }
    QPainter painter(&image);
    painter.fillRect(QRect(64, 64, 256, 128), QColor(20, 40, 160));
    painter.fillRect(QRect(96, 96, 192, 64), QColor(240, 240, 240));
    return image;
}

void putLe(QByteArray& out, quint32 value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.append(char((value >> (8 * i)) & 0xff));
}

} // namespace

TerminalClient::TerminalClient(QObject* parent) : QObject(parent) {
    pieceTimer_ = new QTimer(this);
    pieceTimer_->setSingleShot(true);
    connect(pieceTimer_, &QTimer::timeout, this, &TerminalClient::sendNextPiece);
    connect(&socket_, &QTcpSocket::readyRead, this, &TerminalClient::onReadyRead);
    connect(&socket_, &QTcpSocket::connected, this, &TerminalClient::connected);
    connect(&socket_, &QTcpSocket::disconnected, this, [this] {
        pieces_.clear();
        pieceInFlight_ = false;
        Q_EMIT disconnected();
    });
    connect(&socket_, &QTcpSocket::bytesWritten, this, &TerminalClient::onBytesWritten);
    connect(&socket_, &QTcpSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError) { Q_EMIT failed(socket_.errorString()); });
}

TerminalClient::~TerminalClient() {
    socket_.disconnect(this);
}

bool TerminalClient::connectToConsole(const QString& host, quint16 port,
                                      const QHostAddress& localAddress) {
    socket_.abort();
    pending_.clear();
    pieces_.clear();
    pieceInFlight_ = false;
    if (!localAddress.isNull() && !socket_.bind(localAddress))
        return false;
    socket_.connectToHost(host, port);
    return true;
}

bool TerminalClient::waitConnected(int timeoutMs) {
    return waitUntil([this] { return isConnected(); }, timeoutMs);
}

void TerminalClient::disconnectFromConsole() {
    socket_.disconnectFromHost();
}

void TerminalClient::abort() {
    socket_.abort();
}

bool TerminalClient::isConnected() const {
    return socket_.state() == QAbstractSocket::ConnectedState;
}

void TerminalClient::sendRaw(const QByteArray& message) {
    // Out at once, one write per message: the console reads each arrival as one.
    socket_.write(message);
    socket_.flush();
}

void TerminalClient::identify() {
    sendRaw(Msg::identify(pc_));
}

void TerminalClient::requestLogOnDialog() {
    sendRaw(Msg::requestLogOnDialog());
}

void TerminalClient::logIn(const QString& payload) {
    sendRaw(Msg::logIn(payload));
}

void TerminalClient::checkMember(const QString& payload) {
    sendRaw(Msg::checkMember(payload));
}

void TerminalClient::requestRates() {
    sendRaw(Msg::requestRates());
}

void TerminalClient::sendText(const QString& text) {
    sendRaw(Msg::textToConsole(text));
}

void TerminalClient::requestProducts() {
    sendRaw(Msg::requestProducts());
}

void TerminalClient::sendAlert(const QString& text) {
    sendRaw(Msg::alert(text));
}

void TerminalClient::sendProcessList(const QStringList& items) {
    sendRaw(Msg::processList(items));
}

void TerminalClient::sendSnapshot(const QByteArray& bitmap) {
    pieces_ += SnapshotPieces(bitmap);
    if (!pieceInFlight_ && !pieceTimer_->isActive())
        sendNextPiece();
}

void TerminalClient::sendNextPiece() {
    if (pieces_.isEmpty() || !isConnected()) {
        pieces_.clear();
        return;
    }
    pieceInFlight_ = true;
    socket_.write(pieces_.takeFirst());
}

void TerminalClient::onBytesWritten() {
    // The console reads each arrival as one piece; the next piece leaves only once the
    // previous one is out, and a moment later, so that two do not arrive as one.
    if (!pieceInFlight_ || socket_.bytesToWrite() > 0)
        return;
    pieceInFlight_ = false;
    if (pieces_.isEmpty())
        return;
    if (pieceGapMs_ > 0)
        pieceTimer_->start(pieceGapMs_);
    else
        sendNextPiece();
}

QByteArray TerminalClient::takeMessage(int timeoutMs) {
    if (!waitUntil([this] { return !inbox_.isEmpty(); }, timeoutMs))
        return QByteArray();
    return inbox_.takeFirst();
}

QByteArray TerminalClient::waitFor(const QByteArray& start, int timeoutMs) {
    qsizetype found = -1;
    auto look = [&] {
        for (qsizetype i = 0; i < inbox_.size(); ++i)
            if (inbox_[i].startsWith(start)) {
                found = i;
                return true;
            }
        return false;
    };
    if (!waitUntil(look, timeoutMs))
        return QByteArray();
    return inbox_.takeAt(found);
}

bool TerminalClient::waitForPresent(const QByteArray& start, int timeoutMs) {
    return waitUntil(
        [&] {
            return std::any_of(inbox_.cbegin(), inbox_.cend(),
                               [&](const QByteArray& m) { return m.startsWith(start); });
        },
        timeoutMs);
}

bool TerminalClient::waitUntil(const std::function<bool()>& done, int timeoutMs) {
    if (done())
        return true;
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    auto check = [&] {
        if (done())
            loop.quit();
    };
    connect(this, &TerminalClient::messageReceived, &loop, check);
    connect(this, &TerminalClient::connected, &loop, check);
    connect(this, &TerminalClient::disconnected, &loop, &QEventLoop::quit);
    connect(this, &TerminalClient::failed, &loop, &QEventLoop::quit);
    timer.start(timeoutMs);
    loop.exec();
    return done();
}

void TerminalClient::onReadyRead() {
    pending_ += socket_.readAll();
    const QList<QByteArray> messages = SplitMessages(pending_);
    for (const QByteArray& m : messages)
        onMessage(m);
}

void TerminalClient::onMessage(const QByteArray& message) {
    inbox_.append(message);
    if (inbox_.size() > inboxLimit_)
        inbox_.removeFirst();
    Q_EMIT messageReceived(message);
    if (message == "LGOF" || message == "RSTR" || message == "PTAY" ||
        message.startsWith("KLPR ")) {
        systemCommand(message);
        return;
    }
    if (!autoAnswer_)
        return;
    if (message == "RQPR") {
        const QStringList processes = RunningProcesses();
        sendProcessList(processes);
        Q_EMIT answered(QStringLiteral("APL with %1 processes").arg(processes.size()));
    } else if (message == "SNPS") {
        const QByteArray bitmap = SnapshotBitmap();
        sendSnapshot(bitmap);
        Q_EMIT answered(QStringLiteral("snapshot of %1 bytes").arg(bitmap.size()));
    }
}

void TerminalClient::systemCommand(const QByteArray& message) {
    const QString user = currentUserName();
    QString action;
    bool done = false;
    if (message.startsWith("KLPR ")) {
        const QString name = QString::fromUtf8(message.mid(5)).trimmed();
        action = QStringLiteral("end the processes named \"%1\" of user %2").arg(name, user);
        if (obey_ && !name.isEmpty()) {
            const uid_t me = getuid();
            const QStringList items = RunningProcesses();
            for (const QString& item : items) {
                const qsizetype colon = item.indexOf(QLatin1Char(':'));
                const pid_t pid = pid_t(item.left(colon).toLongLong());
                if (item.mid(colon + 1) != name || pid == getpid() || pid <= 1)
                    continue;
                struct stat st {};
                const QByteArray dir = "/proc/" + QByteArray::number(pid);
                if (::stat(dir.constData(), &st) != 0 || st.st_uid != me)
                    continue; // only this user's own processes
                done |= ::kill(pid, SIGTERM) == 0;
            }
        }
    } else {
        QString program = QStringLiteral("systemctl");
        QStringList args;
        if (message == "LGOF") {
            program = QStringLiteral("loginctl");
            args = {QStringLiteral("terminate-user"), user};
        } else if (message == "RSTR") {
            args = {QStringLiteral("reboot")};
        } else {
            args = {QStringLiteral("poweroff")};
        }
        action = program + QLatin1Char(' ') + args.join(QLatin1Char(' '));
        if (obey_)
            done = QProcess::startDetached(program, args);
    }
    Q_EMIT systemRequest(message, action, done);
}

QList<QByteArray> TerminalClient::SplitMessages(QByteArray& pending) {
    return Protocol::splitConsoleMessages(pending);
}

QStringList TerminalClient::RunningProcesses() {
    std::vector<std::pair<qint64, QString>> found;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (!isPid)
            continue;
        QFile comm(QStringLiteral("/proc/%1/comm").arg(entry));
        if (!comm.open(QIODevice::ReadOnly))
            continue; // gone meanwhile
        const QString name = QString::fromUtf8(comm.readAll()).trimmed();
        if (!name.isEmpty())
            found.emplace_back(pid, name);
    }
    std::sort(found.begin(), found.end());
    QStringList items;
    for (const auto& [pid, name] : found)
        items << QString::number(pid) + QLatin1Char(':') + name;
    return items;
}

QByteArray TerminalClient::SnapshotBitmap() {
    QImage image;
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            const QPixmap shot = screen->grabWindow(0);
            if (!shot.isNull())
                image = shot.toImage();
        }
    if (image.isNull())
        image = drawnPicture();
    return EncodeBitmap(image);
}

QByteArray TerminalClient::EncodeBitmap(const QImage& source) {
    QImage image = source.isNull() ? QImage(1, 1, QImage::Format_RGB888)
                                   : source.convertToFormat(QImage::Format_RGB888);
    if (source.isNull())
        image.fill(Qt::black);
    const quint32 width = quint32(image.width());
    const quint32 height = quint32(image.height());
    const quint32 stride = (width * 3 + 3) & ~3u;
    const quint32 pixelBytes = stride * height;
    constexpr quint32 headerBytes = 14 + 40;
    const quint32 size = headerBytes + pixelBytes;
    // Trailing bytes that readers skip, so that the size field starts with '6'.
    const quint32 pad = (0x36u - (size & 0xffu)) & 0xffu;

    QByteArray out;
    out.reserve(qsizetype(size + pad));
    out.append("BM");
    putLe(out, size + pad, 4);
    putLe(out, 0, 4);
    putLe(out, headerBytes, 4);
    putLe(out, 40, 4);
    putLe(out, width, 4);
    putLe(out, height, 4);
    putLe(out, 1, 2);
    putLe(out, 24, 2);
    putLe(out, 0, 4); // no compression
    putLe(out, pixelBytes, 4);
    putLe(out, 2835, 4); // 72 dots per inch
    putLe(out, 2835, 4);
    putLe(out, 0, 4);
    putLe(out, 0, 4);
    const QByteArray rowPad(qsizetype(stride - width * 3), '\0');
    for (int y = int(height) - 1; y >= 0; --y) {
        const uchar* line = image.constScanLine(y);
        for (quint32 x = 0; x < width; ++x) {
            out.append(char(line[3 * x + 2]));
            out.append(char(line[3 * x + 1]));
            out.append(char(line[3 * x]));
        }
        out.append(rowPad);
    }
    out.append(QByteArray(qsizetype(pad), '\0'));
    return out;
}

QList<QByteArray> TerminalClient::SnapshotPieces(const QByteArray& bitmap) {
    QList<QByteArray> pieces;
    for (qsizetype at = 0; at < bitmap.size(); at += SnapshotPieceSize)
        pieces.append(bitmap.mid(at, SnapshotPieceSize));
    if (pieces.isEmpty())
        pieces.append(QByteArray());
    pieces.last().append("Close");
    return pieces;
}
