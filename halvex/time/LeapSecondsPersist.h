#pragma once

#include "halvex/platform/Export.h"
#include "halvex/time/IGPSLeapSeconds.h"

/// Where the leap-second sets outlive the process. A host derives from it and installs its object; this base saves
/// nothing and loads the built-in state. The table calls it on the threads of its own callers, possibly on several at
/// once, and holds none of the locks that its setters and lookups need. It must not create or shut down the table from
/// within.
class HALVEX_EXPORT CLeapSecondsPersistBase {
public:
    virtual ~CLeapSecondsPersistBase();
    /// False when the set was not saved; the table does not mind.
    virtual bool SaveManual(const IGPSLeapSeconds::SGPSLeapSeconds& set);
    /// Fills `set`; the base with zeros. After false the table keeps the set that it has and does not save it
    /// until somebody sets it.
    virtual bool LoadManual(IGPSLeapSeconds::SGPSLeapSeconds& set);
    virtual bool SaveAuto(const IGPSLeapSeconds::SGPSLeapSeconds& set);
    /// As LoadManual; the base fills in the built-in defaults.
    virtual bool LoadAuto(IGPSLeapSeconds::SGPSLeapSeconds& set);
};

/// The persistence object of the process.
class HALVEX_EXPORT CLeapSecondsPersist {
public:
    /// Installs `instance`, which the caller owns and keeps alive while it is installed; returns the one before. Null
    /// brings back the default.
    static CLeapSecondsPersistBase* InitInstance(CLeapSecondsPersistBase* instance);
    /// The installed object, else a CLeapSecondsPersistBase that is made at the first use.
    static CLeapSecondsPersistBase& GetInstance();
};
