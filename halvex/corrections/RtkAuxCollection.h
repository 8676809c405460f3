#pragma once

#include <cstdint>
#include <map>

#include "halvex/observations/HalvexUniqueID.h"
#include "halvex/platform/Export.h"
#include "halvex/platform/caln/CombinedCorrections.h"

/// Head of the messages about one auxiliary station: which subnetwork, master and station they are about. Plain value,
/// all zero by default.
class CRtkAux : public CALN::MsgHeaderT {
public:
    CRtkAux() = default;
    CRtkAux(unsigned char subnetworkId, unsigned short master, unsigned short auxiliary) {
        subnetwork = subnetworkId;
        masterStation = master;
        auxiliaryStation = auxiliary;
    }

    friend bool operator==(const CRtkAux&, const CRtkAux&) = default;
};

/// The auxiliary stations of a network, by site. Owns the heads; a pointer to one lives until it is removed. One thread
/// at a time.
class HALVEX_EXPORT CRtkAuxCollection {
public:
    CRtkAuxCollection() = default;
    CRtkAuxCollection(const CRtkAuxCollection&) = default;
    CRtkAuxCollection& operator=(const CRtkAuxCollection&) = default;
    virtual ~CRtkAuxCollection();

    /// False, with nothing changed, when the site is there already.
    bool AddRtkAux(const CHalvexUniqueSiteID& site, const CRtkAux& aux);
    /// False, with `aux` as it was, when the site is not there.
    bool GetRtkAux(const CHalvexUniqueSiteID& site, CRtkAux*& aux);
    /// By position in the order of the sites; false, with both as they were, when there are not so many.
    bool GetRtkAux(std::uint64_t index, CRtkAux*& aux, CHalvexUniqueSiteID& site);
    /// False when the site is not there.
    bool RemoveRtkAux(const CHalvexUniqueSiteID& site);
    [[nodiscard]] bool IsAuxAvailable(const CHalvexUniqueSiteID& site) const { return m_aux.contains(site); }
    /// Always true.
    bool ClearRtkAuxCollection();
    [[nodiscard]] std::uint64_t GetCount() const { return m_aux.size(); }

    /// All of them, in the order of the sites.
    [[nodiscard]] std::map<CHalvexUniqueSiteID, CRtkAux>& entries() { return m_aux; }

private:
    std::map<CHalvexUniqueSiteID, CRtkAux> m_aux;
};
