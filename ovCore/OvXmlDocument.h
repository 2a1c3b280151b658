// An XML document: creating and loading one, and what is wrong with a text that does not load.
#pragma once

#include "ovCore/OvXmlNode.h"

#include <string>

/// Generation of the platform's XML parser.
enum OvXmlParserVersion : LONG
{
    XmlParser3 = 3,
    XmlParser4 = 4,
    XmlParser6 = 6,
    XmlParserBest = 65535 ///< the newest that can be created: 6, else 4, else 3
};

/// A DOM document, seen as the node at its root; empty until it is created. As with COvXmlNode, failures are raised as
/// COvException and leave the object as it was. The calling thread must have entered a COM apartment, and stays the one
/// that uses the document.
class COvXmlDocument : public COvXmlNode
{
public:
    /// @param node     the document to wrap, or null for one that is still to be created.
    /// @param version  an OvXmlParserVersion: of the wrapped document, or the one to create.
    COvXmlDocument(IXMLDOMNode* node, LONG version);

    /// The generation that was asked for; once created, the one that was.
    LONG GetParserVersion() const { return m_nParserVersion; }

    /// Makes a new, empty document and readies it: the newer parser is chosen, queries are XPath. White space is not
    /// preserved.
    void Create();

    /// Makes a document object of the version asked for and notes the generation that was made. A version other than
    /// XmlParserBest is never replaced by another. Does not change the document that is held.
    /// Raises E_FAIL when none can be made.
    COvComPtr<IXMLDOMDocument> CreateDoc();

    void SetProperty(BSTR bstrName, const VARIANT& value);

    /// Keeps texts of nothing but white space when a document is loaded from now on.
    void PreserveWhitespace();

    /// Loads a text; an encoding that it declares is ignored. A text with a document type is refused as generation 6 of
    /// the parser refuses it; an older one, which would expand its entities, does not get it.
    /// @param bThrow  raise when it does not load, with the call's result (1, S_FALSE, for a malformed text) as code
    ///                and the parse error as evidence; otherwise return false then.
    bool LoadDoc(BSTR bstrXml, bool bThrow);

    /// Loads from a file path or URL, given as a string VARIANT. An older generation of the parser takes a document
    /// type from there.
    bool LoadDoc(const VARIANT& source, bool bThrow);

    /// Creates the document unless there is one, then loads the text, or the file of that path.
    /// @return whether it was loaded; always true with bThrow.
    bool LoadXML(BSTR strSource, bool bIsFile, bool bThrow, bool bPreserveWhitespace);

    /// Why the last load failed: file position, line, position in the line, reason and source line, on lines that end
    /// with a line feed. Tells what could not be found out instead of raising.
    std::wstring GetParseError() const;

protected:
    /// Appends the item "XML Parse Error" instead of a node's path.
    void AddDiagnosticEvidence(COvEvidence& evidence) const noexcept override;

private:
    COvComPtr<IXMLDOMDocument> QueryDocument() const;
    void ApplyParserProperties();

    [[noreturn]] void RaiseLoadFailure(HRESULT hr, LONG nLine, IXMLDOMDocument* pDoc, const COvEvidence& call) const;

    LONG m_nParserVersion;
    bool m_bTypeRefused = false; // the last text had a document type, and the parser was not asked
};
