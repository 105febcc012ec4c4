#include "console/instance_lock.h"

InstanceLock::InstanceLock(const AppFolder& folder)
    : lock_(folder.file(QString::fromLatin1(FileName))) {
    // A console runs for days: the lock must never go stale by age, only when the
    // process that wrote it is gone.
    lock_.setStaleLockTime(0);
}

bool InstanceLock::tryLock() {
    return lock_.tryLock(0);
}
