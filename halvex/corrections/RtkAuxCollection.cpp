#include "halvex/corrections/RtkAuxCollection.h"

#include <iterator>

CRtkAuxCollection::~CRtkAuxCollection() = default;

bool CRtkAuxCollection::AddRtkAux(const CHalvexUniqueSiteID& site, const CRtkAux& aux) {
    return m_aux.try_emplace(site, aux).second;
}

bool CRtkAuxCollection::GetRtkAux(const CHalvexUniqueSiteID& site, CRtkAux*& aux) {
    const auto found = m_aux.find(site);
    if (found == m_aux.end()) return false;
    aux = &found->second;
    return true;
}

bool CRtkAuxCollection::GetRtkAux(std::uint64_t index, CRtkAux*& aux, CHalvexUniqueSiteID& site) {
    if (index >= m_aux.size()) return false;
    const auto found = std::next(m_aux.begin(), static_cast<std::ptrdiff_t>(index));
    aux = &found->second;
    site = found->first;
    return true;
}

bool CRtkAuxCollection::RemoveRtkAux(const CHalvexUniqueSiteID& site) {
    return m_aux.erase(site) != 0;
}

bool CRtkAuxCollection::ClearRtkAuxCollection() {
    m_aux.clear();
    return true;
}
