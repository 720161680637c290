#pragma once

#include <QString>

namespace ZyHelp::Publish {

// The words of the site around the authors' texts: German for "de", English otherwise.
struct SiteText
{
    QString skip;
    QString contents;
    QString breadcrumbs;
    QString languages;
    QString search;
    QString searchLabel;
    QString searchResults;
    QString noResults;
    QString needsScript;
    QString seeAlso;
    QString permalink;
    QString previous;
    QString next;
    QString pages;
    QString untranslated; // %1: the language whose text is shown

    static const SiteText &forLanguage(const QString &language);
};

} // namespace ZyHelp::Publish
