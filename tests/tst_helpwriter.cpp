#include <QtTest>

class TstHelpwriter : public QObject
{
    Q_OBJECT
};

QTEST_MAIN(TstHelpwriter)
#include "tst_helpwriter.moc"
