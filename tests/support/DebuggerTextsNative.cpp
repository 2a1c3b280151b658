#include "DebuggerTexts.h"

#include "Platform/Control.h"

CDebuggerTexts::CDebuggerTexts()
{
    OvPlatform::CaptureDebuggerTexts(true);
}

CDebuggerTexts::~CDebuggerTexts()
{
    OvPlatform::CaptureDebuggerTexts(false);
}

std::vector<std::wstring> CDebuggerTexts::Take()
{
    std::vector<std::wstring> texts;
    for (const OvPlatform::CDebuggerText& text : OvPlatform::TakeDebuggerTexts())
        texts.push_back(text.text);
    return texts;
}
