#include "halvex/platform/bss/MsgObject.h"

BSS::TSK::MsgObjectI::~MsgObjectI() = default;
