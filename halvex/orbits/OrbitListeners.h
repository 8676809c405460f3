#pragma once

#include "halvex/platform/Export.h"

class CHalvexEphemeris;
class CHalvexEphemerisGLO;
class CHalvexEphemerisGAL;
class CHalvexEphemerisBDS;
class CHalvexEphemerisQZSS;
class CHalvexEphemerisNAVIC;
class CHalvexAlmanac;
class CHalvexAlmanacGlonass;
class CHalvexAlmanacGal;
class CHalvexAlmanacBds;
class CHalvexAlmanacQzss;

/// Takes new ephemerides. False: this one could not be used.
class HALVEX_EXPORT IEphemerisListener {
public:
    virtual ~IEphemerisListener();
    virtual bool ProcessNewEphemeris(const CHalvexEphemerisNAVIC& ephemeris) = 0;
    virtual bool ProcessNewEphemeris(const CHalvexEphemerisQZSS& ephemeris) = 0;
    virtual bool ProcessNewEphemeris(const CHalvexEphemerisBDS& ephemeris) = 0;
    virtual bool ProcessNewEphemeris(const CHalvexEphemerisGAL& ephemeris) = 0;
    virtual bool ProcessNewEphemeris(const CHalvexEphemerisGLO& ephemeris) = 0;
    virtual bool ProcessNewEphemeris(const CHalvexEphemeris& ephemeris) = 0;
};

/// Takes new almanacs; NavIC has none here. False: this one could not be used.
class HALVEX_EXPORT IAlmanacListener {
public:
    virtual ~IAlmanacListener();
    virtual bool ProcessNewAlmanac(const CHalvexAlmanacQzss& almanac) = 0;
    virtual bool ProcessNewAlmanac(const CHalvexAlmanacBds& almanac) = 0;
    virtual bool ProcessNewAlmanac(const CHalvexAlmanacGal& almanac) = 0;
    virtual bool ProcessNewAlmanac(const CHalvexAlmanacGlonass& almanac) = 0;
    virtual bool ProcessNewAlmanac(const CHalvexAlmanac& almanac) = 0;
};
