// A PO file: read, written and read back, it must give what was read. The
// importer's two readings of a file (check, and units still encoded) must
// agree with the plain one.

#include "catalogcheck.h"
#include "poreader.h"
#include "powriter.h"

#include <QMap>

using namespace ZyHelp::Translate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = Fuzz::input(data, size);
    Catalog first;
    ReadError error;
    const bool valid = Fuzz::read<PoReader>(bytes, &first, &error);
    Fuzz::Input input(bytes);
    Catalog checked;
    if (PoReader().check(&input, &checked, &error) != valid)
        Fuzz::fail("check() and read() disagree", error.message);
    if (!valid)
        return 0;
    input.seek(0);
    Catalog encoded;
    if (!PoReader().readEncoded(&input, &encoded, &error,
                                [&](EncodedUnit &&unit) { encoded.units.append(unit.decoded()); })
        || Fuzz::fields(encoded) != Fuzz::fields(first))
        Fuzz::fail("readEncoded() and read() disagree", error.message);

    // gettext keeps the previous source of fuzzy entries only, and so does the writer.
    for (TranslationUnit &unit : first.units) {
        if (!unit.fuzzy)
            unit.previousSource.clear();
    }
    QByteArray written;
    QBuffer output(&written);
    output.open(QIODevice::WriteOnly);
    PoWriter(&output).write(first);
    Catalog second;
    Fuzz::expectReadBack<PoReader>(first, written, &second);
    // Header fields read are written back (the last of a name given twice);
    // the writer fills in those the file lacked.
    QMap<QString, QString> read, back;
    for (const auto &field : std::as_const(first.translatorFields))
        read.insert(field.first, field.second);
    for (const auto &field : std::as_const(second.translatorFields))
        back.insert(field.first, field.second);
    for (auto it = read.cbegin(); it != read.cend(); ++it)
        Fuzz::expectEqual("a header field", {it.key(), *it}, {it.key(), back.value(it.key())});
    return 0;
}
