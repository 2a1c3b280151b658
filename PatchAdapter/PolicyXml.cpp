#include "PatchAdapter/PolicyXml.h"

#include "ovCore/OvStringUtil.h"

std::wstring AttrText(const COvXmlNode& node, const wchar_t* szName)
{
    return COvStringUtil::FromBSTR(node.GetAttrValueStr(COvBstr(szName).Get()));
}
