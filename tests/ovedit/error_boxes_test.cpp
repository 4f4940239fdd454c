#include "error_boxes.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>
#include <qovutil.h>

#include "error_text.h"

namespace {

const QString failure = "QOvConnection::request: 'process' request to server failed:\n\nSubset failed for "
                        "expression 'lat < stx':\n\n"
                        "dbsubset: unknown field `stx`; near it: sta\n  lat < stx\n        "
                        "^^^\n\nQOvServer::process: request 'subset': "
                        "input QDbptr: [\n\t\t0 = '/data/quakes'\n]";

struct Shown {
    QString text;
    QString details;
};

Shown shown(const QString &text)
{
    Shown seen;
    QTimer::singleShot(0, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        seen = {box->text(), box->detailedText()};
        box->reject();
    });
    qovutil_showError(text, nullptr);
    return seen;
}

TEST(ErrorBoxes, showTheReasonAndKeepTheWholeTextBehindAButton)
{
    const ErrorBoxes boxes;
    const Shown seen = shown(failure);
    EXPECT_EQ(seen.text.toStdString(),
              "<p>Subset failed for expression 'lat &lt; stx'.</p><p>Unknown field 'stx'; near it: sta</p>"
              "<pre>  lat &lt; stx\n        ^^^</pre>");
    EXPECT_EQ(seen.details, failure);
}

TEST(ErrorBoxes, leaveOtherTextsAsTheyAre)
{
    const ErrorBoxes boxes;
    const QString plain = "Subset of 'site' on expression 'lat > 100': result has no records";
    EXPECT_EQ(shown(plain).text, plain);
    EXPECT_EQ(shown(plain).details, "");
}

TEST(ErrorBoxes, areTheLibrarysAgainWithoutTheObject)
{
    EXPECT_EQ(shown(failure).text, failure);
}

TEST(ErrorText, isTheReasonWithoutTheLayers)
{
    EXPECT_EQ(reasonIn("QOvConnection::open: failed:\n\nFailed to open database x\n\nno such file",
                       "Failed to open database"),
              "no such file");
    EXPECT_EQ(reasonIn("QOvConnection::open: failed"), "QOvConnection::open: failed")
        << "better than nothing";
}

} // namespace
