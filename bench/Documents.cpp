// The status document.
#include "Documents.h"

#include "Bench.h"
#include "PeerPugixml.h"
#include "PeerRapidxml.h"
#include "PeerTinyxml2.h"
#include "WriterOurs.h"
#if OV_BENCH_NATIVE
#include "PeerLibxml2.h"
#endif

template <class Writer, class Char>
void AddStatus(const char* szName)
{
    Add("status document", szName, 1, [] { benchmark::DoNotOptimize(WriteStatus<Writer, Char>()); });
}

void AddDocuments()
{
    AddStatus<CWriterOurs, wchar_t>(OURS);
    AddStatus<CRapidxmlWriter, char>("rapidxml");
    AddStatus<CPugixmlWriter, char>("pugixml");
    AddStatus<CTinyxml2Writer, char>("tinyxml2");
#if OV_BENCH_NATIVE
    AddStatus<CLibxml2Writer, char>("libxml2");
#endif
    Add("status document", "limit: copy of the text", 1,
        [text = WriteStatus<CWriterOurs, wchar_t>()] { benchmark::DoNotOptimize(std::wstring(text)); });
}
