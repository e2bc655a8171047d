// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Runs a fuzzer over the files of the folders that are given, without libFuzzer.

#include "Fuzzing.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <iostream>

namespace {

int replay(const QDir& folder)
{
    int runs = 0;
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        SCOPED_TRACE(folder.filePath(name).toStdString());
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        fuzz(file.readAll());
        ++runs;
    }
    return runs;
}

} // namespace

int main(int argc, char* argv[])
{
    testing::GTEST_FLAG(throw_on_failure) = true;
    testing::InitGoogleTest(&argc, argv);
    int runs = 0;
    for (int index = 1; index < argc; ++index) {
        const int runsOfFolder = replay(QDir(QString::fromLocal8Bit(argv[index])));
        EXPECT_GT(runsOfFolder, 0) << "no files in " << argv[index];
        runs += runsOfFolder;
    }
    std::cout << runs << " files" << std::endl;
    return runs > 0 ? 0 : 1;
}
