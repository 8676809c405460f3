#pragma once

#include "halvex/orbits/HalvexOrbitBase.h"

/// Almanac of one satellite: coarse and long-lived.
class HALVEX_EXPORT IHalvexAlmanacBase : public IHalvexOrbitBase {
public:
    ~IHalvexAlmanacBase() override;

    [[nodiscard]] CALN::eCALEPHEMERISTYPE GetOrbitType() const override { return CALN::eCALEPHEMERISTYPE_ALMANAC; }
    [[nodiscard]] bool IsSimulated() const override { return false; }

protected:
    IHalvexAlmanacBase() = default;
    IHalvexAlmanacBase(const IHalvexAlmanacBase&) = default;
    IHalvexAlmanacBase& operator=(const IHalvexAlmanacBase&) = default;
};
