// Short forms of what the policy is read with.
#pragma once

#include "ovCore/OvXmlNode.h"

#include <string>
#include <string_view>

/// A node's name without prefix, as the DOM gave it: there is one for each element of a policy.
class CBaseName
{
public:
    explicit CBaseName(const COvXmlNode& node) : m_str(node.GetNodeBaseName()) {}

    /// Empty for texts and comments, never null.
    const wchar_t* Sz() const { return m_str.IsNull() ? L"" : m_str.Get(); }
    bool operator==(std::wstring_view name) const { return name == Sz(); }

private:
    COvBstr m_str;
};

/// A required attribute as text. Raises what COvXmlNode::GetAttrValueStr does.
std::wstring AttrText(const COvXmlNode& node, const wchar_t* szName);
