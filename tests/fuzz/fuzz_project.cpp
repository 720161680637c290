// A project file: its name (as the editor reads it) and its list of documents
// (as the checker reads it), written and read back, must be those read.

#include "fuzzcommon.h"
#include "projectfile.h"

#include <QBuffer>

using namespace ZyHelp;

namespace {

struct Read
{
    std::optional<QString> name;
    bool listed = false;
    QStringList files;
    QString error;
};

Read read(QByteArray bytes)
{
    Read result;
    QBuffer forName(&bytes);
    forName.open(QIODevice::ReadOnly);
    result.name = ProjectFileReader::readName(&forName);
    QBuffer forList(&bytes);
    forList.open(QIODevice::ReadOnly);
    result.listed = ProjectFileReader::readList(&forList, QStringLiteral("p"), &result.files,
                                                &result.error);
    if (!result.listed)
        result.files.clear(); // the checker takes nothing of a file it refuses
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Read first = read(Fuzz::input(data, size));
    if (!first.name)
        return 0;
    const QByteArray written = ProjectFileWriter::toXml(*first.name, first.files);
    const Read second = read(written);
    if (!second.listed)
        Fuzz::fail("the written file is refused",
                   second.error + u'\n' + QString::fromUtf8(written));
    Fuzz::expectEqual("the name", *first.name, second.name.value_or(QStringLiteral("(none)")));
    Fuzz::expectEqual("the documents", first.files, second.files, first.files.join(u'|'),
                      second.files.join(u'|'));
    return 0;
}
