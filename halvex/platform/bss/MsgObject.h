#pragma once

#include <concepts>

#include "halvex/platform/Export.h"
#include "halvex/platform/caln/SsrMessages.h"

namespace BSS::TSK {

/// What travels between tasks, shared through reference-counted pointers and released by its last holder.
class HALVEX_EXPORT MsgObjectI {
public:
    MsgObjectI() = default;
    MsgObjectI(const MsgObjectI&) = default;
    MsgObjectI& operator=(const MsgObjectI&) = default;
    virtual ~MsgObjectI();
};

/// A record as such a message: holds one by value.
template <class Record>
class MsgObjectT : public MsgObjectI, public Record {
public:
    MsgObjectT() = default;
    explicit MsgObjectT(const Record& record) : Record(record) {}
};

/// A correction message of any kind: a pointer to one of the messages below converts to a pointer to this.
template <>
class MsgObjectT<CALN::SSRCorrMsgBaseT> : public MsgObjectI, public virtual CALN::SSRCorrMsgBaseT {
public:
    MsgObjectT() = default;
    explicit MsgObjectT(const CALN::SSRCorrMsgBaseT& record) : CALN::SSRCorrMsgBaseT(record) {}
};

/// A correction message of one kind.
template <std::derived_from<CALN::SSRCorrMsgBaseT> Record>
requires(!std::same_as<Record, CALN::SSRCorrMsgBaseT>) class MsgObjectT<Record>
    : public MsgObjectT<CALN::SSRCorrMsgBaseT>, public Record {
public:
    MsgObjectT() = default;
    explicit MsgObjectT(const Record& record)
        : CALN::SSRCorrMsgBaseT(record), MsgObjectT<CALN::SSRCorrMsgBaseT>(record), Record(record) {}
};

}  // namespace BSS::TSK
