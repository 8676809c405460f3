#pragma once

#include <utility>

namespace BSS::TSK {

/// A record as a task message: holds one record by value, so that it can travel in a boost::shared_ptr and be released
/// by its last holder.
template <class Record>
class MsgObjectT : public Record {
public:
    MsgObjectT() = default;
    explicit MsgObjectT(const Record& record) : Record(record) {}
    virtual ~MsgObjectT() = default;
    MsgObjectT(const MsgObjectT&) = default;
    MsgObjectT& operator=(const MsgObjectT&) = default;
};

}  // namespace BSS::TSK
