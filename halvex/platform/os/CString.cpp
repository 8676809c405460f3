#include "halvex/platform/os/CString.h"

int CString::Compare(const char* other) const {
    return m_text.compare(other);
}
