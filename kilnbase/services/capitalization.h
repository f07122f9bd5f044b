// Titles and sentences with the capital letters of print.
//
// Words stand between characters of white space, each of which becomes a blank; so runs of blanks
// keep their length. Letters, digits and their cases are those of ASCII, in every locale. A
// capitalized word has its first character in upper case and all others in lower case.
//
// The minor words, in any case: a, an, and, at, but, for, has, into, in, is, it, not, of, on, or,
// so, the, to, with, yet.
#pragma once

#include <kilnbase/export.h>
#include <vx/String.h>

namespace vxKilnBase {

/// Capitalizes all words but the minor ones, which become lower case. The first and the last word
/// that have a letter or digit are capitalized even when they are minor ones.
///
///     puts(vxKilnBase::toBookTitleCapitalization(vxString::CString("rules of THE road")).c_str());
///
/// prints "Rules of the Road".
KILNBASE_API vxString::CString toBookTitleCapitalization(const vxString::CString& text);
KILNBASE_API vxString::IString toBookTitleCapitalization(const vxString::IString& text);

/// Capitalizes the first word that has a letter or digit, and the words that begin with a capital
/// letter, minor words excepted. All other words become lower case. A word of capitals keeps only
/// its first one: "the NURBS Of a curve" becomes "The Nurbs of a curve".
KILNBASE_API vxString::CString toSentenceCapitalization(const vxString::CString& text);
KILNBASE_API vxString::IString toSentenceCapitalization(const vxString::IString& text);

}  // namespace vxKilnBase
