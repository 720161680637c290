#include "xliffreader.h"

#include <QHash>
#include <QIODevice>
#include <QXmlStreamReader>

namespace ZyHelp::Translate {

namespace {

bool isTranslatedState(QStringView state)
{
    return state.isEmpty() || state == u"translated" || state == u"final" || state == u"signed-off";
}

} // namespace

bool XliffReader::read(QIODevice *device, Catalog *catalog, ReadError *error,
                       const std::function<void(TranslationUnit &&)> &sink)
{
    if (device->peek(3) == "\xEF\xBB\xBF" || device->peek(2) == "\xFF\xFE"
        || device->peek(2) == "\xFE\xFF") {
        *error = ReadError{1, 1,
                           QStringLiteral("the file starts with a byte-order mark; "
                                          "translations are read as UTF-8 without one")};
        return false;
    }
    QXmlStreamReader xml(device);
    const auto fail = [&](const QString &message) {
        *error = ReadError{xml.lineNumber(), xml.columnNumber() + 1, message};
        return false;
    };
    QHash<QString, qint64> ids;
    bool haveLanguages = false;
    bool seenRoot = false;
    TranslationUnit unit;
    QString document;
    int altDepth = 0; // inside <alt-trans>: suggestions, not the unit's own texts
    bool inUnit = false;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartDocument) {
            const QStringView encoding = xml.documentEncoding();
            if (!encoding.isEmpty() && encoding.compare(u"UTF-8", Qt::CaseInsensitive) != 0)
                return fail(QStringLiteral("the file is %1; translations are read as UTF-8")
                                .arg(encoding.toString()));
        } else if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (!seenRoot) {
                seenRoot = true;
                const QStringView version = xml.attributes().value(QLatin1StringView("version"));
                if (name != u"xliff" || !version.startsWith(u"1."))
                    return fail(QStringLiteral("not XLIFF 1.x: the root element is <%1>")
                                    .arg(name.toString()));
            } else if (altDepth > 0 || name == u"alt-trans") {
                if (altDepth == 1 && name == u"source") {
                    unit.previousSource =
                        xml.readElementText(QXmlStreamReader::IncludeChildElements);
                    continue;
                }
                ++altDepth;
            } else if (name == u"file") {
                const QXmlStreamAttributes a = xml.attributes();
                const QString source = a.value(QLatin1StringView("source-language")).toString();
                const QString target = a.value(QLatin1StringView("target-language")).toString();
                if (haveLanguages
                    && (source != catalog->sourceLanguage || target != catalog->targetLanguage))
                    return fail(
                        QStringLiteral("this <file> translates '%1' to '%2', the first "
                                       "one '%3' to '%4'")
                            .arg(source, target, catalog->sourceLanguage, catalog->targetLanguage));
                catalog->sourceLanguage = source;
                catalog->targetLanguage = target;
                haveLanguages = true;
                document = a.value(QLatin1StringView("original")).toString();
            } else if (name == u"trans-unit") {
                // One inside another would take the place of the unit being read.
                if (inUnit)
                    return fail(QStringLiteral("a <trans-unit> inside another one"));
                inUnit = true;
                unit = TranslationUnit();
                unit.id = xml.attributes().value(QLatin1StringView("id")).toString();
                unit.document = document;
                unit.line = xml.lineNumber();
                const auto seen = ids.constFind(unit.id);
                if (seen != ids.cend())
                    return fail(QStringLiteral("the id '%1' was given before, on line %2")
                                    .arg(unit.id)
                                    .arg(seen.value()));
                ids.insert(unit.id, unit.line);
            } else if (name == u"source") {
                unit.source = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            } else if (name == u"target") {
                unit.fuzzy = !isTranslatedState(xml.attributes().value(QLatin1StringView("state")));
                unit.target = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (altDepth > 0) {
                --altDepth;
            } else if (xml.name() == u"trans-unit") {
                inUnit = false;
                if (sink)
                    sink(std::move(unit));
                else
                    catalog->units.append(unit);
            }
        }
    }
    if (xml.hasError())
        return fail(xml.errorString());
    if (!haveLanguages) {
        *error = ReadError{1, 1, QStringLiteral("no <file> with the languages")};
        return false;
    }
    return true;
}

} // namespace ZyHelp::Translate
