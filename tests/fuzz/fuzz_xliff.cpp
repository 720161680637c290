// An XLIFF file: read, written and read back, it must give what was read.

#include "catalogcheck.h"
#include "xliffreader.h"
#include "xliffwriter.h"

using namespace ZyHelp::Translate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Catalog first;
    ReadError error;
    if (!Fuzz::read<XliffReader>(Fuzz::input(data, size), &first, &error))
        return 0;
    for (TranslationUnit &unit : first.units) {
        // A template holds no translations, and an empty target is none: the
        // writer writes no <target> then, nor the state that fuzzy comes from.
        if (first.targetLanguage.isEmpty())
            unit.target.clear();
        if (unit.target.isEmpty())
            unit.fuzzy = false;
        // The earlier source goes with the earlier translation of a fuzzy unit.
        if (!unit.fuzzy)
            unit.previousSource.clear();
    }
    QByteArray written;
    QBuffer output(&written);
    output.open(QIODevice::WriteOnly);
    XliffWriter(&output, first.sourceLanguage, first.targetLanguage).write(first);
    Catalog second;
    Fuzz::expectReadBack<XliffReader>(first, written, &second);
    return 0;
}
