#include "halvex/platform/z9/RtkNetworkProduct.h"

Z9::CRTKNetworkProduct::~CRTKNetworkProduct() = default;
