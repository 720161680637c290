#include "searchindexwriter.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace ZyHelp::Publish {

QByteArray SearchIndexWriter::entry(const QString &url, const QString &title,
                                    const QByteArray &words)
{
    // Words are letters and digits between spaces: nothing in them needs
    // escaping, and a page's words are most of the index.
    QByteArray entry = QJsonDocument(QJsonArray{url, title}).toJson(QJsonDocument::Compact);
    entry.chop(1); // ]
    return entry.append(",\"").append(words).append("\"]");
}

void SearchIndexWriter::add(const QByteArray &entry)
{
    m_entries.append(m_entries.isEmpty() ? "\n" : ",\n").append(entry);
}

QByteArray SearchIndexWriter::script() const
{
    // JSON as a script: U+2028 and U+2029 end a line in older engines' strings.
    QByteArray json = m_entries;
    json.replace("\xe2\x80\xa8", "\\u2028").replace("\xe2\x80\xa9", "\\u2029");
    return "var ZY_SEARCH = [" + json + "\n];\n";
}

} // namespace ZyHelp::Publish
