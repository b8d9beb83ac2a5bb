#ifndef NUV_TESTS_QT_WARNINGS_H_
#define NUV_TESTS_QT_WARNINGS_H_

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>

// Makes every warning that Qt prints from now on fail the test that runs: a socket used from the
// wrong thread is reported in no other way.
inline void ExpectNoQtWarnings() {
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
    ADD_FAILURE() << "Qt: " << text.toStdString();
  });
}

#endif  // NUV_TESTS_QT_WARNINGS_H_
