// A project file: its name as the editor reads it and its list of documents
// as the checker reads it, written and read back, must be those read.

#include "fuzzcommon.h"
#include "projectfile.h"
#include "xmltext.h"

using namespace ZyHelp;

namespace {

// The name (or nothing), whether the list was taken, and the list.
QStringList read(const QByteArray &bytes, bool *listed)
{
    Fuzz::Input forName(bytes);
    const std::optional<QString> name = ProjectFileReader::readName(&forName);
    Fuzz::Input forList(bytes);
    QStringList files;
    QString error;
    *listed = ProjectFileReader::readList(&forList, QString(), &files, &error);
    // The checker takes nothing of a file it refuses.
    return QStringList{name.value_or(QStringLiteral("(none)"))} + (*listed ? files : QStringList());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    bool listed = false;
    QStringList first = read(Fuzz::input(data, size), &listed);
    if (first.constFirst() == u"(none)" && !listed)
        return 0;
    // A reader decoding UTF-16 keeps lone surrogates, which XML cannot hold:
    // the writer drops them, and the list's entries are trimmed again.
    for (qsizetype i = 0; i < first.size(); ++i) {
        first[i] = withoutLoneSurrogates(first[i]);
        if (i > 0)
            first[i] = first[i].trimmed();
    }
    const QByteArray written = ProjectFileWriter::toXml(first.constFirst(), first.mid(1));
    const QStringList second = read(written, &listed);
    if (!listed)
        Fuzz::fail("the written file is refused", QString::fromUtf8(written));
    Fuzz::expectEqual("the name and the documents", first, second);
    return 0;
}
