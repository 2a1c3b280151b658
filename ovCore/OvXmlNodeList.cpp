#include "ovCore/OvXmlNodeList.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

#include <utility>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvXmlNode";

std::vector<COvXmlNode> ReadAll(IXMLDOMNodeList* pList)
{
    std::vector<COvXmlNode> nodes;
    while (pList != nullptr)
    {
        COvComPtr<IXMLDOMNode> spNode;
        const HRESULT hr = pList->nextNode(spNode.Receive());
        if (FAILED(hr))
            OvRaise(hr, s_szSource, __LINE__,
                    COvEvidence(L"Method", L"IXMLDOMNodeList::nextNode") + COvEvidence(L"Win32 Error", hr, true) +
                        COvEvidence(L"Error Object Info", pList, IID_IXMLDOMNodeList));
        if (!spNode)
            break;
        nodes.emplace_back(std::move(spNode));
    }
    return nodes;
}

} // namespace

void COvXmlNodeList::Populate(IXMLDOMNodeList* list)
{
    OV_SCOPE(L"COvXmlNodeList::Populate");
    try
    {
        m_nodes = ReadAll(list);
    }
    catch (const std::exception& e)
    {
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Exception Info", e));
    }
}
