#pragma once

#include "halvex/platform/Export.h"

namespace CALN {

/// An exclusive lock, handed to objects of the computation library by their host. Safe from any thread; whether it is
/// recursive the implementation says.
class HALVEX_EXPORT CCalLock {
public:
    virtual ~CCalLock();
    virtual void acquire() = 0;
    virtual void release() = 0;
};

/// A lock with shared readers and exclusive writers, handed over in the same way.
class HALVEX_EXPORT ICalReaderWriterLock {
public:
    virtual ~ICalReaderWriterLock();
    virtual void acquireReadLock() = 0;
    virtual void acquireWriteLock() = 0;
    virtual void releaseReadLock() = 0;
    virtual void releaseWriteLock() = 0;
};

}  // namespace CALN
