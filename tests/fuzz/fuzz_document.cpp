// A help document: read, written and read back, it must be the document read.

#include "fuzzcommon.h"
#include "helpdata.h"
#include "testutil.h"

using namespace ZyHelp;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ParseStatus status;
    const HelpData first = HelpParser().parseData(Fuzz::input(data, size), &status);
    const QByteArray written = HelpWriter().toXml(first);
    const HelpData second = HelpParser().parseData(written, &status);
    if (status.outcome != ParseStatus::Complete)
        Fuzz::fail("the written document is faulty", QString::fromUtf8(written));
    if (first != second)
        Fuzz::expectEqual("the document", {Test::dump(first)}, {Test::dump(second)});
    return 0;
}
