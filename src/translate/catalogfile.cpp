#include "catalogfile.h"

#include "poreader.h"
#include "powriter.h"
#include "xliffreader.h"
#include "xliffwriter.h"

#include "savefile.h"

#include <QFile>
#include <QSaveFile>

namespace ZyHelp::Translate {

CatalogFile::Format CatalogFile::formatOf(const QString &path)
{
    const QString suffix = path.section(u'.', -1).toLower();
    if (suffix == u"po" || suffix == u"pot")
        return Po;
    if (suffix == u"xlf" || suffix == u"xliff")
        return Xliff;
    return Unknown;
}

bool CatalogFile::check(const QString &path, Catalog *header, QString *errorString)
{
    return read(path, header, errorString, {}, {}, CheckOnly);
}

bool CatalogFile::read(const QString &path, Catalog *catalog, QString *errorString,
                       const std::function<void(TranslationUnit &&)> &sink)
{
    return read(path, catalog, errorString, sink, {}, Units);
}

bool CatalogFile::readEncoded(const QString &path, Catalog *catalog, QString *errorString,
                              const std::function<void(EncodedUnit &&)> &sink)
{
    return read(path, catalog, errorString, {}, sink, Encoded);
}

bool CatalogFile::read(const QString &path, Catalog *catalog, QString *errorString,
                       const std::function<void(TranslationUnit &&)> &sink,
                       const std::function<void(EncodedUnit &&)> &encodedSink, Mode mode)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *errorString = QStringLiteral("%1: error: cannot open: %2").arg(path, file.errorString());
        return false;
    }
    ReadError error;
    bool read = false;
    if (formatOf(path) == Xliff) {
        std::function<void(TranslationUnit &&)> units = sink;
        if (mode == CheckOnly)
            units = [](TranslationUnit &&) {};
        else if (mode == Encoded)
            units = [&](TranslationUnit &&unit) { encodedSink(EncodedUnit::encode(unit)); };
        read = XliffReader().read(&file, catalog, &error, units);
    } else if (mode == CheckOnly) {
        read = PoReader().check(&file, catalog, &error);
    } else if (mode == Encoded) {
        read = PoReader().readEncoded(&file, catalog, &error, encodedSink);
    } else {
        read = PoReader().read(&file, catalog, &error, sink);
    }
    if (!read)
        *errorString = QStringLiteral("%1:%2:%3: error: %4")
                           .arg(path)
                           .arg(error.line)
                           .arg(error.column)
                           .arg(error.message);
    return read;
}

bool CatalogFile::write(const QString &path, const Catalog &catalog, QString *errorString)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *errorString = QStringLiteral("%1: error: cannot write: %2").arg(path, file.errorString());
        return false;
    }
    if (formatOf(path) == Xliff)
        XliffWriter(&file, catalog.sourceLanguage, catalog.targetLanguage).write(catalog);
    else
        PoWriter(&file).write(catalog);
    QString error;
    if (!commitSaveFile(&file, true, &error)) {
        *errorString = QStringLiteral("%1: error: cannot write: %2").arg(path, error);
        return false;
    }
    return true;
}

} // namespace ZyHelp::Translate
