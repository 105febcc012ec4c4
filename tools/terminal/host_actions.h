#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

class QImage;

// What this machine does for the console: it lists its processes and pictures its
// screen whenever asked; it ends processes, logs off, restarts or shuts down only when
// told to obey, since a test terminal runs on someone's own desktop.
class HostActions {
public:
    // What a request means on this machine, and whether it was carried out.
    struct Outcome {
        QString action;
        bool carriedOut = false;
    };

    void setObey(bool obey) { obey_ = obey; }
    bool obeys() const { return obey_; }

    // Ends (SIGTERM) this user's processes named `name`, never this program or init.
    Outcome endProcesses(const QString& name) const;
    Outcome logOff() const;   // loginctl terminate-user USER
    Outcome restart() const;  // systemctl reboot
    Outcome shutDown() const; // systemctl poweroff

    // This machine's processes as "pid:name" items (the name after the first ":"),
    // by process id.
    static QStringList runningProcesses();
    // A screen picture as a bitmap file whose size field begins with the byte '6', as
    // the console expects of a snapshot's first piece. The screen when there is one,
    // a drawn picture otherwise.
    static QByteArray snapshotBitmap();
    // A 24-bit bitmap file of the image, padded at the end so that the low byte of
    // the file size is 0x36.
    static QByteArray encodeBitmap(const QImage& image);
    // The bitmap in the protocol's pieces, the end mark appended to the last.
    static QList<QByteArray> snapshotPieces(const QByteArray& bitmap);

private:
    Outcome runCommand(const QString& program, const QStringList& arguments) const;

    bool obey_ = false;
};
