#pragma once

#include <QString>
#include <QTemporaryDir>

// A small disk of its own (a tmpfs mounted on a temporary folder) that a test can fill up
// or make read-only, so that a console on it meets a real full or read-only disk. Needs
// the right to mount (root); mounted() says whether it came up.
class ScratchDisk {
public:
    explicit ScratchDisk(int megabytes = 4);
    ~ScratchDisk();
    ScratchDisk(const ScratchDisk&) = delete;
    ScratchDisk& operator=(const ScratchDisk&) = delete;

    bool mounted() const { return mounted_; }
    QString path() const { return dir_.path(); }
    QString why() const { return why_; }

    // Takes every free byte; free() gives them back.
    bool fill();
    void free();
    // Files already open for writing stay writable, as on a disk that turns read-only.
    bool setReadOnly(bool readOnly);

private:
    QTemporaryDir dir_;
    bool mounted_ = false;
    bool overlaid_ = false; // a read-only bind mount lies over the disk
    QString why_;
};
