#include <cstdio>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "platform/host/Host.h"

int main() {
    host::setProperty("vendor.debug.lsc_mgr.otp_tbl_idx", 4);
    int index = 0;
    CustomShadingUtil::GetMultiTableIndex(index, 0);
    std::printf("golden shading table %d\n", index);
    return index == 4 ? 0 : 1;
}
