#include "Platform/Dom/Tree.h"
#include "Platform/Text/FileNames.h"
#include "Platform/Text/Utf8.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <iconv.h>
#include <libxml/encoding.h>
#include <sys/stat.h>

namespace OvPlatform::Dom
{

namespace
{

constexpr HRESULT s_hrNotFound = OvHresult(0x800C0006u); // the platform loads files as resources
constexpr HRESULT s_hrEncoding = OvHresult(0xC00CE56Eu);
constexpr HRESULT s_hrCharacter = OvHresult(0xC00CE508u);

struct CCloseFile
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

/// Regular files only: another kind could keep the caller waiting.
std::optional<std::string> ReadBytes(const std::string& szPath)
{
    struct stat status = {};
    constexpr off_t nMost = 0x3FFFFFFF; // what a BSTR could hold
    if (szPath.empty() || ::stat(szPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > nMost)
        return std::nullopt;
    const std::unique_ptr<std::FILE, CCloseFile> spFile(std::fopen(szPath.c_str(), "rbe"));
    if (!spFile)
        return std::nullopt;
    std::string szBytes(static_cast<size_t>(status.st_size), '\0');
    szBytes.resize(std::fread(szBytes.data(), 1, szBytes.size(), spFile.get()));
    return std::ferror(spFile.get()) != 0 ? std::nullopt : std::optional(std::move(szBytes));
}

/// As the first bytes show it, else as the XML declaration says, else UTF-8.
std::string EncodingOf(const std::string& szBytes)
{
    const auto nLength = static_cast<int>(std::min<size_t>(szBytes.size(), 4));
    const xmlCharEncoding detected = xmlDetectCharEncoding(AsXml(szBytes.data()), nLength);
    if (detected != XML_CHAR_ENCODING_NONE && detected != XML_CHAR_ENCODING_UTF8)
        return AsText(AsXml(xmlGetCharEncodingName(detected)));
    const std::string szBeginning = szBytes.substr(0, szBytes.find("?>") + 2);
    for (const auto& [wzName, wzValue] : XmlDeclaration(std::wstring(szBeginning.begin(), szBeginning.end())))
    {
        if (wzName == L"encoding")
            return std::string(wzValue.begin(), wzValue.end());
    }
    return "UTF-8";
}

class CConverter
{
public:
    explicit CConverter(const std::string& szFrom) : m_handle(::iconv_open("WCHAR_T", szFrom.c_str())) {}
    CConverter(const CConverter&) = delete;
    CConverter& operator=(const CConverter&) = delete;

    ~CConverter()
    {
        if (IsKnown())
            ::iconv_close(m_handle);
    }

    bool IsKnown() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    /// Nothing when the bytes are not in the encoding.
    std::optional<std::wstring> Convert(std::string szBytes) const
    {
        std::wstring wzCharacters(szBytes.size(), L'\0'); // none takes less than a byte
        char* pIn = szBytes.data();
        size_t nIn = szBytes.size();
        auto pOut = reinterpret_cast<char*>(wzCharacters.data());
        size_t nOut = wzCharacters.size() * sizeof(wchar_t);
        if (::iconv(m_handle, &pIn, &nIn, &pOut, &nOut) == static_cast<size_t>(-1))
            return std::nullopt;
        wzCharacters.resize(wzCharacters.size() - nOut / sizeof(wchar_t));
        return wzCharacters;
    }

private:
    const iconv_t m_handle;
};

/// Characters outside the basic plane become two units.
std::wstring UnitsOf(const std::wstring& wzCharacters)
{
    std::wstring wzUnits;
    wzUnits.reserve(wzCharacters.size());
    for (const wchar_t character : wzCharacters)
    {
        if (character > 0xFFFF)
            wzUnits += static_cast<wchar_t>(0xD7C0 + (character >> 10));
        wzUnits += character > 0xFFFF ? static_cast<wchar_t>(0xDC00 + (character & 0x3FF)) : character;
    }
    return wzUnits;
}

std::nullopt_t Refuse(CParseFault& fault, HRESULT hr, const wchar_t* szReason)
{
    fault.m_hr = hr;
    fault.m_wzReason = szReason;
    return std::nullopt;
}

} // namespace

std::optional<std::wstring> ReadTextFile(std::wstring_view path, CParseFault& fault)
{
    const std::optional<std::string> bytes = ReadBytes(HostPath(path));
    if (!bytes)
        return Refuse(fault, s_hrNotFound, L"The system cannot locate the object specified.\r\n");
    const CConverter converter(EncodingOf(*bytes));
    if (!converter.IsKnown())
        return Refuse(fault, s_hrEncoding, L"System does not support the specified encoding.\r\n");
    const std::optional<std::wstring> characters = converter.Convert(*bytes);
    if (!characters)
        return Refuse(fault, s_hrCharacter, L"An invalid character was found in text content.\r\n");
    return UnitsOf(*characters);
}

} // namespace OvPlatform::Dom
