// Compares pictures with the reference images of tests/golden/references.
//
// Invariants:
// 1. A comparison is exact: every pixel has the colour of the reference.
// 2. A comparison never writes a reference; a missing one is a failure.
#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QString>
#include <QStringList>

namespace wavo::testing {

/// Success when `picture` is the reference `name`. Else says what differs and where the picture
/// and, if the sizes are the same, the difference were saved: NAME-actual.png, NAME-difference.png
/// (the reference in grey, what differs in red). Device pixels count.
::testing::AssertionResult MatchesReference(const QString& name, const QImage& picture);

/// Makes `picture` the reference `name`; leaves the file alone if it is that already. False when it
/// cannot be written.
bool WriteReference(const QString& name, const QImage& picture);

/// The names of all references, sorted.
QStringList ReferenceNames();

/// Deletes a reference. False when it cannot be deleted.
bool RemoveReference(const QString& name);

}  // namespace wavo::testing
