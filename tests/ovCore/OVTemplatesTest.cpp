#include "OVTemplates.h"

#include "AnsweringObject.h"
#include "Raised.h"

#include <gtest/gtest.h>

#include <utility>

TEST(OvBuffer, AnIndexOrASizeOutsideIsRefused)
{
    COvByteBuffer buffer;
    const std::wstring strRefusal = L"0x80004005 OVTemplates | Info Msg: Index out of range. | nIdx: ";
    EXPECT_EQ(strRefusal + L"0 | _size: 0", Raised([&] { buffer[0] = 1; }));
    buffer.Resize(3);
    buffer[2] = 7;
    EXPECT_EQ(7, std::as_const(buffer)[2]);
    EXPECT_EQ(strRefusal + L"3 | _size: 3", Raised([&] { buffer[3] = 1; }));
    COvBufferT<wchar_t> large;
    large.Resize(3);
    EXPECT_THROW(large.Resize(0xFFFFFFFFu), std::bad_alloc);
    EXPECT_EQ(0u, large.Size());
}

TEST(QueryInterfaceChecked, StoresTheInterfaceOrRaisesTheQuerysCode)
{
    CAnsweringObject object(true, IID_IUnknown, S_OK);
    COvComPtr<ISupportErrorInfo> result;
    QueryInterfaceChecked(&object, result, IID_ISupportErrorInfo, L"ISupportErrorInfo");
    EXPECT_TRUE(result.Get() == &object && object.References() == 1);
    EXPECT_EQ(L"0x80004002 OVTemplates | Msg: A QueryInterface call failed. | pIn: " +
                  std::to_wstring(static_cast<int64_t>(reinterpret_cast<intptr_t>(&object))) +
                  L" | pOut: 0 | Current IID:: {00000000-0000-0000-C000-000000000046} | Request IID:: "
                  L"{00020400-0000-0000-C000-000000000046} | Request Nm:: not supplied by caller | " +
                  ErrorItem(L"hr", E_NOINTERFACE),
              Raised([&] { QueryInterfaceChecked(&object, result, IID_IDispatch, nullptr); }));
    EXPECT_TRUE(!result && object.References() == 0);
}
