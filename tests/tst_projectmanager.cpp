#include <QtTest>

class TstProjectmanager : public QObject
{
    Q_OBJECT
};

QTEST_MAIN(TstProjectmanager)
#include "tst_projectmanager.moc"
