#include "contract.h"

using namespace ca::test;

TEST(Text, IsWidenedOrRefused) {
    // How many U+FFFD an ill-formed sequence makes is written down nowhere, so rows that need
    // more than one name none.
    using Row = std::tuple<std::string, std::wstring, bool>;
    for (const auto& [bytes, lenient, wellFormed] :
         {Row("ab", L"ab", true),
          {std::string("a\0b", 3), std::wstring(L"a\0b", 3), true},
          {"é€\U0001F600", L"é€\U0001F600", true},
          {"\xF4\x8F\xBF\xBF", L"\U0010FFFF", true},
          {"\x80", L"\uFFFD", false},
          {"\xE2\x82", L"\uFFFD", false},
          {"\xF0\x9F\x98", L"\uFFFD", false},
          {"\xE2\x82z", L"\uFFFDz", false},
          {"\xC0\x80", L"", false},
          {"\xE0\x80\x80", L"", false},
          {"\xED\xA0\x80", L"", false},
          {"\xF4\x90\x80\x80", L"", false}}) {
        const int size = static_cast<int>(bytes.size());
        wchar_t wide[8];
        const int count = ::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, wide, 8);
        const std::wstring text(wide, static_cast<std::size_t>(count));
        EXPECT_EQ(text, lenient.empty() ? std::wstring(text.size(), L'\uFFFD') : lenient);
        EXPECT_EQ(::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0), count);
        EXPECT_EQ(::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, wide, 8),
                  wellFormed ? count : 0);
        EXPECT_EQ(wellFormed ? ERROR_NO_UNICODE_TRANSLATION : ::GetLastError(),
                  DWORD{ERROR_NO_UNICODE_TRANSLATION})
            << testing::PrintToString(bytes);
    }
    wchar_t small[2];
    EXPECT_EQ(::MultiByteToWideChar(CP_UTF8, 0, "abc", -1, nullptr, 0), 4) << "-1 counts the zero";
    EXPECT_EQ(result(::MultiByteToWideChar(CP_UTF8, 0, "abc", 3, small, 2)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(result(::MultiByteToWideChar(CP_UTF8, 0, "", 0, small, 2)),
              DWORD{ERROR_INVALID_PARAMETER});
}

TEST(Module, KnowsItsPathOrAsMuchAsFits) {
    wchar_t whole[4096];
    const DWORD length = ::GetModuleFileNameW(nullptr, whole, 4096);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(fs::exists(pathFromWide({whole, length})));
    for (const DWORD size : {DWORD{1}, DWORD{5}, length}) {
        wchar_t cut[4096] = {};
        EXPECT_EQ(::GetModuleFileNameW(nullptr, cut, size), size);
        EXPECT_EQ(::GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(std::wstring(cut, size - 1), std::wstring(whole, size - 1));
    }
}

TEST(Environment, IsReadBySize) { // of a variable that stands beside the test's command
    wchar_t buffer[16];
    EXPECT_EQ(std::wstring(buffer, ::GetEnvironmentVariableW(L"CONTRACT_VALUE", buffer, 16)),
              L"välue");
    for (const DWORD size : {6U, 5U, 0U}) {
        EXPECT_EQ(::GetEnvironmentVariableW(L"CONTRACT_VALUE", buffer, size), size == 6 ? 5U : 6U);
    }
    EXPECT_EQ(::GetEnvironmentVariableW(L"CONTRACT_NOTHING", buffer, 16), 0U);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_ENVVAR_NOT_FOUND});
}
