#include "corelib/math/hresult_name.h"

#include <gtest/gtest.h>

namespace {

TEST(HresultName, IsThePublishedOne) {
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x88760B55u)), "D3DXERR_INVALIDMESH");
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x8876086Cu)), "D3DERR_INVALIDCALL");
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x88760867u)), "D3DERR_MOREDATA");
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x88760B59u)), "D3DXERR_INVALIDDATA");
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x8007000Eu)), "E_OUTOFMEMORY");
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x80004005u)), "E_FAIL");
    EXPECT_STREQ(hresult_name(0), "S_OK");
}

TEST(HresultName, OfAnUndocumentedValueIsUnknown) {
    EXPECT_STREQ(hresult_name(static_cast<HRESULT>(0x8876FFFFu)), "Unknown");
}

} // namespace
