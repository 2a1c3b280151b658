// iconv with a converter that is kept open.
#pragma once

#include <iconv.h>
#include <string>

class CIconv
{
public:
    CIconv(const char* szTo, const char* szFrom) : m_converter(iconv_open(szTo, szFrom)) {}
    ~CIconv() { iconv_close(m_converter); }
    CIconv(const CIconv&) = delete;
    CIconv& operator=(const CIconv&) = delete;

    /// @return a text of as many characters as the input has.
    template <class To, class From>
    std::basic_string<To> Convert(const std::basic_string<From>& input)
    {
        std::basic_string<To> result(input.size(), To());
        char* pIn = const_cast<char*>(reinterpret_cast<const char*>(input.data()));
        char* pOut = reinterpret_cast<char*>(result.data());
        size_t nIn = input.size() * sizeof(From);
        size_t nOut = result.size() * sizeof(To);
        iconv(m_converter, &pIn, &nIn, &pOut, &nOut);
        return result;
    }

private:
    iconv_t m_converter;
};
