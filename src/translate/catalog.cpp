#include "catalog.h"

namespace ZyHelp::Translate {

EncodedUnit EncodedUnit::encode(const TranslationUnit &unit)
{
    EncodedUnit encoded;
    encoded.texts = unit.id.toUtf8();
    encoded.sourceAt = encoded.texts.size();
    encoded.texts += unit.source.toUtf8();
    encoded.targetAt = encoded.texts.size();
    encoded.texts += unit.target.toUtf8();
    encoded.previousAt = encoded.texts.size();
    encoded.texts += unit.previousSource.toUtf8();
    encoded.fuzzy = unit.fuzzy;
    encoded.line = unit.line;
    return encoded;
}

TranslationUnit EncodedUnit::decoded() const
{
    const QByteArrayView all(texts);
    TranslationUnit unit;
    unit.id = QString::fromUtf8(all.first(sourceAt));
    unit.source = QString::fromUtf8(all.sliced(sourceAt, targetAt - sourceAt));
    unit.target = QString::fromUtf8(all.sliced(targetAt, previousAt - targetAt));
    unit.previousSource = QString::fromUtf8(all.sliced(previousAt));
    unit.fuzzy = fuzzy;
    unit.line = line;
    return unit;
}

} // namespace ZyHelp::Translate
