#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QImage;

// What this machine does for the console: it lists its processes and pictures its
// screen whenever asked; it ends processes, logs off, restarts or shuts down only when
// allowed to, since a test terminal runs on someone's own desktop.
class HostActions {
public:
    // What a request means on this machine, and whether it was carried out.
    struct Outcome {
        QString action;
        bool carriedOut = false;
    };
    // Starts a program and does not wait for it; true when it started.
    using CommandRunner = std::function<bool(const QString& program, const QStringList& args)>;

    HostActions();

    // Allows everything, or nothing, at once.
    void setObey(bool obey) { mayEndProcesses_ = mayPower_ = obey; }
    bool obeys() const { return mayEndProcesses_ && mayPower_; }
    // Ending this user's processes, and logging off, restarting and shutting down, are
    // allowed separately.
    void setMayEndProcesses(bool may) { mayEndProcesses_ = may; }
    void setMayPower(bool may) { mayPower_ = may; }
    bool mayPower() const { return mayPower_; }
    // What starts loginctl and systemctl (a test puts a recorder here).
    void setCommandRunner(CommandRunner runner) { runner_ = std::move(runner); }
    // The process list answers with this user's processes only, not the whole machine's.
    void setOwnProcessesOnly(bool own) { ownProcessesOnly_ = own; }

    // The process list as the console is answered.
    QStringList processList() const;

    // Ends (SIGTERM) this user's processes named `name`, never this program or init.
    Outcome endProcesses(const QString& name) const;
    Outcome logOff() const;   // loginctl terminate-user USER
    Outcome restart() const;  // systemctl reboot
    Outcome shutDown() const; // systemctl poweroff

    // This machine's processes as "pid:name" items (the name after the first ":"),
    // by process id; with `ownOnly`, only those of this user.
    static QStringList runningProcesses(bool ownOnly = false);
    // A screen picture as a bitmap file whose size field begins with the byte '6', as
    // the console expects of a snapshot's first piece. Every screen, each where it stands
    // on the desktop, when there is one; a drawn picture otherwise.
    static QByteArray snapshotBitmap();
    // The picture of every screen together, null when none can be grabbed.
    static QImage screensPicture();
    // A 24-bit bitmap file of the image, padded at the end so that the low byte of
    // the file size is 0x36.
    static QByteArray encodeBitmap(const QImage& image);
    // The bitmap in the protocol's pieces, the end mark appended to the last.
    static QList<QByteArray> snapshotPieces(const QByteArray& bitmap);

private:
    Outcome runCommand(const QString& program, const QStringList& arguments) const;

    bool mayEndProcesses_ = false;
    bool mayPower_ = false;
    bool ownProcessesOnly_ = false;
    CommandRunner runner_;
};
