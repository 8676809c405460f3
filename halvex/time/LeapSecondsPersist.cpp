#include "halvex/time/LeapSecondsPersist.h"

#include <atomic>

#include "halvex/time/GPSLeapSeconds.h"

using SGPSLeapSeconds = IGPSLeapSeconds::SGPSLeapSeconds;

namespace {

std::atomic<CLeapSecondsPersistBase*> installed{nullptr};

}  // namespace

CLeapSecondsPersistBase::~CLeapSecondsPersistBase() = default;

bool CLeapSecondsPersistBase::SaveManual(const SGPSLeapSeconds&) {
    return false;
}

bool CLeapSecondsPersistBase::LoadManual(SGPSLeapSeconds& set) {
    set = SGPSLeapSeconds();
    return true;
}

bool CLeapSecondsPersistBase::SaveAuto(const SGPSLeapSeconds&) {
    return false;
}

bool CLeapSecondsPersistBase::LoadAuto(SGPSLeapSeconds& set) {
    set = {GetDefaultLeapSeconds(), GetDefaultLeapSecondsFuture(), GetDefaultLeapSecondsFutureMjd(),
           GetDefaultLeapSecondsConfirmMjd()};
    return true;
}

CLeapSecondsPersistBase* CLeapSecondsPersist::InitInstance(CLeapSecondsPersistBase* instance) {
    return installed.exchange(instance);
}

CLeapSecondsPersistBase& CLeapSecondsPersist::GetInstance() {
    static CLeapSecondsPersistBase standard;
    CLeapSecondsPersistBase* const instance = installed.load();
    return instance != nullptr ? *instance : standard;
}
