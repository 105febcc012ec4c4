#include "support/scratch_disk.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <sys/mount.h>

namespace {
QString filler(const QString& path) {
    return path + QStringLiteral("/.filler");
}
} // namespace

ScratchDisk::ScratchDisk(int megabytes) {
    const QByteArray options = "size=" + QByteArray::number(megabytes) + "m";
    mounted_ = ::mount("tarvo-scratch", dir_.path().toLocal8Bit().constData(), "tmpfs", 0,
                       options.constData()) == 0;
    if (!mounted_)
        why_ = QString::fromLocal8Bit(std::strerror(errno));
}

ScratchDisk::~ScratchDisk() {
    setReadOnly(false);
    if (mounted_)
        ::umount2(dir_.path().toLocal8Bit().constData(), MNT_DETACH);
}

bool ScratchDisk::fill() {
    QFile f(filler(path()));
    if (!f.open(QIODevice::Append | QIODevice::Unbuffered))
        return false;
    const QByteArray block(64 * 1024, 'x');
    while (f.write(block) == block.size() && f.flush()) {
    }
    // What a block left over still fits, byte by byte down to nothing.
    for (qsizetype size = block.size() / 2; size > 0; size /= 2)
        while (f.write(block.left(size)) == size && f.flush()) {
        }
    return true;
}

void ScratchDisk::free() {
    QFile::remove(filler(path()));
}

bool ScratchDisk::setReadOnly(bool readOnly) {
    // A read-only copy of the disk laid over it: files a program holds open stay writable,
    // as when a disk turns read-only under it, while a plain remount would refuse (busy).
    const QByteArray at = dir_.path().toLocal8Bit();
    if (readOnly == overlaid_)
        return true;
    if (!readOnly) {
        overlaid_ = ::umount2(at.constData(), MNT_DETACH) != 0;
        return !overlaid_;
    }
    if (::mount(at.constData(), at.constData(), nullptr, MS_BIND, nullptr) != 0)
        return false;
    overlaid_ = true;
    if (::mount(nullptr, at.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0)
        return true;
    setReadOnly(false);
    return false;
}
