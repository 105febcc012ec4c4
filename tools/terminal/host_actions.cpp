#include "host_actions.h"

#include "protocol/protocol.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QProcess>
#include <QScreen>

#include <algorithm>
#include <utility>
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

bool ownedByMe(qint64 pid) {
    struct stat st {};
    const QByteArray dir = "/proc/" + QByteArray::number(pid);
    return ::stat(dir.constData(), &st) == 0 && st.st_uid == getuid();
}

} // namespace

HostActions::HostActions()
    : runner_([](const QString& program, const QStringList& arguments) {
          return QProcess::startDetached(program, arguments);
      }) {}

QStringList HostActions::processList() const {
    return runningProcesses(ownProcessesOnly_);
}

HostActions::Outcome HostActions::endProcesses(const QString& name) const {
    Outcome outcome{
        QStringLiteral("end the processes named \"%1\" of user %2").arg(name, currentUserName()),
        false};
    if (!mayEndProcesses_ || name.isEmpty())
        return outcome;
    const QStringList items = runningProcesses(true); // only this user's own processes
    for (const QString& item : items) {
        const qsizetype colon = item.indexOf(QLatin1Char(':'));
        const pid_t pid = pid_t(item.left(colon).toLongLong());
        if (item.mid(colon + 1) != name || pid == getpid() || pid <= 1)
            continue;
        outcome.carriedOut |= ::kill(pid, SIGTERM) == 0;
    }
    return outcome;
}

HostActions::Outcome HostActions::logOff() const {
    return runCommand(QStringLiteral("loginctl"),
                      {QStringLiteral("terminate-user"), currentUserName()});
}

HostActions::Outcome HostActions::restart() const {
    return runCommand(QStringLiteral("systemctl"), {QStringLiteral("reboot")});
}

HostActions::Outcome HostActions::shutDown() const {
    return runCommand(QStringLiteral("systemctl"), {QStringLiteral("poweroff")});
}

HostActions::Outcome HostActions::runCommand(const QString& program,
                                             const QStringList& arguments) const {
    Outcome outcome{program + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')), false};
    if (mayPower_ && runner_)
        outcome.carriedOut = runner_(program, arguments);
    return outcome;
}

QStringList HostActions::runningProcesses(bool ownOnly) {
    std::vector<std::pair<qint64, QString>> found;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (!isPid || (ownOnly && !ownedByMe(pid)))
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

QImage HostActions::screensPicture() {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return QImage();
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.isEmpty())
        return QImage();
    QRect desktop;
    for (const QScreen* screen : screens)
        desktop |= screen->geometry();
    QImage picture(desktop.size(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    bool any = false;
    for (QScreen* screen : screens) {
        // Each screen in its own coordinates, drawn where it stands on the desktop.
        const QRect area = screen->geometry();
        const QPixmap shot = screen->grabWindow(0, 0, 0, area.width(), area.height());
        if (shot.isNull())
            continue;
        painter.drawPixmap(QRect(area.topLeft() - desktop.topLeft(), area.size()), shot);
        any = true;
    }
    painter.end();
    return any ? picture : QImage();
}

QByteArray HostActions::snapshotBitmap() {
    QImage image = screensPicture();
    if (image.isNull())
        image = drawnPicture();
    return encodeBitmap(image);
}

QByteArray HostActions::encodeBitmap(const QImage& source) {
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

QList<QByteArray> HostActions::snapshotPieces(const QByteArray& bitmap) {
    QList<QByteArray> pieces;
    for (qsizetype at = 0; at < bitmap.size(); at += Protocol::SnapshotPieceSize)
        pieces.append(bitmap.mid(at, Protocol::SnapshotPieceSize));
    if (pieces.isEmpty())
        pieces.append(QByteArray());
    pieces.last().append(Protocol::SnapshotEnd.toByteArray());
    return pieces;
}
