#include "Host.h"

#include "Masking.h"

namespace
{

const char s_szVersion[] = OV_VERSION;

std::string Line(int nKind, const std::string& text)
{
    return std::to_string(nKind) + " " + text + "\n";
}

} // namespace

std::string CHost::Status()
{
    CRecordingStatusReceiver receiver;
    m_pAdapter->GetStatus(&receiver);
    return Masked(receiver.Last());
}

std::string Entering(const std::string& function)
{
    return Line(4, "Entering Function: " + function);
}

std::string Exiting(const std::string& function)
{
    return Line(4, "Exiting Function: " + function);
}

std::string Info(const std::string& message)
{
    return Line(2, "Info Msg: " + message);
}

std::string Warning(const std::string& message)
{
    return Line(1, "Info Msg: " + message);
}

std::string Error(const std::string& source, const std::string& evidence)
{
    return Line(0, "Error: 80004005 File: " + source + " Line: # Evidence: " + evidence);
}

std::string StatusLines()
{
    const std::string version = Entering("CPatchAdapter::GetBinaryVersion") +
                                Line(3, std::string("version: ") + s_szVersion) +
                                Exiting("CPatchAdapter::GetBinaryVersion");
    return Info("Creating Status XML") + version + version;
}

std::string CExpectedStatus::Text() const
{
    const std::string declaration = R"(<?xml version="1.0" encoding="utf-8"?>)";
    const std::string version = s_szVersion;
    return declaration + R"(<status xmlns="example.trevok\mansys\status" type="patch">)" +
           R"(<CompRes xmlns="example.trevok\msys\csc" policyType=")" + policyType + R"(" Res=")" + res + "\"" +
           (revision.empty() ? "" : " RevID=\"" + revision + "\"") + "></CompRes>" +
           R"(<meta timestamp="#" protocolVersion="1" softwareVersion=")" + version + R"("></meta><data><![CDATA[)" +
           declaration + R"(<patch xmlns="http://www.trevok.example/xml/mansys/patch.xsd" agentVersion=")" + version +
           R"(" serviceRunning=")" + serviceRunning + R"(" assessmentEnabled=")" + assessmentEnabled + R"("><wua )" +
           wua + "></wua></patch>]]></data></status>";
}
