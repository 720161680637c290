#include <QtTest>

class TstHelpparser : public QObject
{
    Q_OBJECT
};

QTEST_MAIN(TstHelpparser)
#include "tst_helpparser.moc"
