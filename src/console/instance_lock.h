#pragma once

#include "base/app_folder.h"

#include <QLockFile>

// One console per data folder: the lock file "tarvoqrb.lock" in the folder is held for
// as long as the console runs. A lock left behind by a console that was killed names a
// process that is gone, and the next start takes it over.
class InstanceLock {
public:
    static constexpr auto FileName = "tarvoqrb.lock";

    explicit InstanceLock(const AppFolder& folder);

    // True when this console now holds the folder; false when another running console
    // does, or when the folder cannot hold a lock file at all (heldElsewhere() tells which).
    bool tryLock();
    // After a refusal: another console holds the folder, rather than the folder refusing
    // the lock file (read-only, missing).
    bool heldElsewhere() const { return lock_.error() == QLockFile::LockFailedError; }
    bool isLocked() const { return lock_.isLocked(); }
    void unlock() { lock_.unlock(); }

private:
    QLockFile lock_;
};
