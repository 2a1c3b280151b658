// Short forms of what the policy is read with.
#pragma once

#include "ovCore/OvXmlNode.h"

#include <string>

/// The node's name without prefix; empty for texts and comments.
std::wstring BaseName(const COvXmlNode& node);

/// A required attribute as text. Raises what COvXmlNode::GetAttrValueStr does.
std::wstring AttrText(const COvXmlNode& node, const wchar_t* szName);
