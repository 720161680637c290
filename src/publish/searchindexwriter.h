#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ZyHelp::Publish {

// The search index of one language: a script that sets ZY_SEARCH, loaded by
// a <script> element, so that the search page works from file:// too.
class SearchIndexWriter
{
public:
    // One page's entry, made where the page is: the index only joins them.
    static QByteArray entry(const QString &url, const QString &title, const QByteArray &words);
    void add(const QByteArray &entry);
    QByteArray script() const;

private:
    QByteArray m_entries;
};

} // namespace ZyHelp::Publish
