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
    void add(const QString &url, const QString &title, const QByteArray &words);
    QByteArray script() const;

private:
    QByteArray m_entries;
};

} // namespace ZyHelp::Publish
