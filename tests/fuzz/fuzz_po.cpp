// A PO file: read, written and read back, it must give the units and languages
// read. The importer's two readings of one file must agree with the plain one.

#include "catalogcheck.h"
#include "poreader.h"
#include "powriter.h"

using namespace ZyHelp::Translate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray bytes = Fuzz::input(data, size);
    Catalog first;
    ReadError error;
    const bool valid = Fuzz::readCatalog<PoReader>(bytes, &first, &error);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    Catalog checked;
    if (PoReader().check(&buffer, &checked, &error) != valid)
        Fuzz::fail("check() and read() disagree", error.message);
    if (!valid)
        return 0;
    buffer.seek(0);
    QList<TranslationUnit> encoded;
    Catalog header;
    const bool encodedValid = PoReader().readEncoded(
        &buffer, &header, &error, [&](EncodedUnit &&unit) { encoded.append(unit.decoded()); });
    if (!encodedValid || encoded.size() != first.units.size())
        Fuzz::fail("readEncoded() and read() disagree", error.message);
    for (qsizetype i = 0; i < first.units.size(); ++i) {
        if (!Fuzz::sameUnit(first.units[i], encoded[i]))
            Fuzz::fail("readEncoded() and read() disagree", Fuzz::shownUnit(first.units[i]));
    }

    Catalog normal = first;
    // gettext keeps the previous source only on fuzzy entries, and so does the writer.
    for (TranslationUnit &unit : normal.units) {
        if (!unit.fuzzy)
            unit.previousSource.clear();
    }
    QByteArray written;
    QBuffer out(&written);
    out.open(QIODevice::WriteOnly);
    PoWriter(&out).write(normal);
    Catalog second;
    Fuzz::expectReadBack<PoReader>(normal, written, &second);
    // The header fields read are written back; the writer fills in those missing.
    for (const std::pair<QString, QString> &field : std::as_const(first.translatorFields)) {
        const auto named = [&](const auto &f) { return f.first == field.first; };
        const auto last = std::find_if(first.translatorFields.crbegin(),
                                       first.translatorFields.crend(), named);
        const auto back = std::find_if(second.translatorFields.cbegin(),
                                       second.translatorFields.cend(), named);
        Fuzz::expectEqual("a header field", field.first + QStringLiteral(": ") + last->second,
                          back == second.translatorFields.cend()
                              ? QString()
                              : field.first + QStringLiteral(": ") + back->second);
    }
    return 0;
}
