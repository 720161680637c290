#include "searchindexwriter.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace ZyHelp::Publish {

void SearchIndexWriter::add(const QString &url, const QString &title, const QByteArray &words)
{
    const QJsonArray entry{url, title, QString::fromUtf8(words)};
    m_entries +=
        (m_entries.isEmpty() ? "\n" : ",\n") + QJsonDocument(entry).toJson(QJsonDocument::Compact);
}

QByteArray SearchIndexWriter::script() const
{
    // JSON as a script: U+2028 and U+2029 end a line in older engines' strings.
    QByteArray json = m_entries;
    json.replace("\xe2\x80\xa8", "\\u2028").replace("\xe2\x80\xa9", "\\u2029");
    return "var ZY_SEARCH = [" + json + "\n];\n";
}

} // namespace ZyHelp::Publish
