#include "documentunits.h"

namespace ZyHelp::Translate {

QString unitId(const QString &relativePath, const UnitPlace &place)
{
    switch (place.kind) {
    case UnitPlace::Description:
        return relativePath + QStringLiteral("#description");
    case UnitPlace::Name:
        return relativePath + u'#' + QString::number(place.section + 1) + QStringLiteral("/name");
    case UnitPlace::Content:
        break;
    }
    return relativePath + u'#' + QString::number(place.section + 1) + QStringLiteral("/content");
}

bool parseUnitId(const QString &id, QString *relativePath, UnitPlace *place)
{
    const qsizetype hash = id.lastIndexOf(u'#');
    if (hash <= 0)
        return false;
    *relativePath = id.left(hash);
    const QStringView rest = QStringView(id).mid(hash + 1);
    if (rest == u"description") {
        *place = UnitPlace{UnitPlace::Description, 0};
        return true;
    }
    const qsizetype slash = rest.indexOf(u'/');
    if (slash < 0)
        return false;
    // Written as unitId writes it, digits without a leading zero, so that
    // "#02/name" is no second name for "#2/name".
    const QStringView digits = rest.left(slash);
    if (digits.isEmpty() || digits.size() > 6 || digits.front() == u'0')
        return false;
    qlonglong number = 0;
    for (const QChar digit : digits) {
        if (digit < u'0' || digit > u'9')
            return false;
        number = number * 10 + (digit.unicode() - u'0');
    }
    const QStringView kind = rest.mid(slash + 1);
    if (number > 100000 || (kind != u"name" && kind != u"content"))
        return false;
    *place =
        UnitPlace{kind == u"name" ? UnitPlace::Name : UnitPlace::Content, qsizetype(number - 1)};
    return true;
}

const QString *textAt(const HelpLanguage &language, const UnitPlace &place)
{
    if (place.kind == UnitPlace::Description)
        return &language.description;
    if (place.section >= language.sections.size())
        return nullptr;
    const HelpSection &section = language.sections.at(place.section);
    return place.kind == UnitPlace::Name ? &section.name : &section.content;
}

QString &textAt(HelpLanguage &language, const UnitPlace &place)
{
    if (place.kind == UnitPlace::Description)
        return language.description;
    while (language.sections.size() <= place.section)
        language.sections.append(HelpSection{QString(), QStringLiteral("...")});
    HelpSection &section = language.sections[place.section];
    return place.kind == UnitPlace::Name ? section.name : section.content;
}

QList<TranslationUnit> documentUnits(const HelpData &data, const QString &relativePath,
                                     const QString &source, const QString &target)
{
    QList<TranslationUnit> units;
    const auto sourceLanguage = data.languages.constFind(source);
    if (sourceLanguage == data.languages.cend())
        return units;
    const auto targetLanguage = data.languages.constFind(target);
    const auto add = [&](const UnitPlace &place, const QString &note) {
        const QString &text = *textAt(*sourceLanguage, place);
        if (isUnwritten(text))
            return;
        TranslationUnit unit;
        unit.id = unitId(relativePath, place);
        unit.source = text;
        unit.document = relativePath;
        unit.note = note;
        if (targetLanguage != data.languages.cend()) {
            const QString *translation = textAt(*targetLanguage, place);
            if (translation && !isUnwritten(*translation))
                unit.target = *translation;
        }
        units.append(std::move(unit));
    };
    add(UnitPlace{UnitPlace::Description, 0}, QStringLiteral("description of the document"));
    const qsizetype count = sourceLanguage->sections.size();
    const QString ofCount = QStringLiteral(" of ") + QString::number(count);
    units.reserve(1 + 2 * count);
    for (qsizetype i = 0; i < count; ++i) {
        const QString number = QString::number(i + 1);
        add(UnitPlace{UnitPlace::Name, i}, QStringLiteral("name of section ") + number + ofCount);
        add(UnitPlace{UnitPlace::Content, i},
            QStringLiteral("section ") + number + ofCount + QStringLiteral(", \"")
                + sourceLanguage->sections.at(i).name + u'"');
    }
    return units;
}

} // namespace ZyHelp::Translate
