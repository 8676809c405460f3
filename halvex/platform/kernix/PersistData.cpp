#include "halvex/platform/kernix/PersistData.h"

IPersistData::~IPersistData() = default;
