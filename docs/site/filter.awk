# Prepares a header for Doxygen:  awk -f filter.awk HEADER
#
# - The comment at the top becomes the page of a topic, under the topic of the folder. A header that
#   is named after its class has no topic: it adds to the one of its folder.
# - A comment holds for all declarations that follow line by line, without a blank line or another
#   comment between; with a blank line behind, up to the next comment. Doxygen knows one declaration
#   a comment, so the others get a copy of the first paragraph.
# - What goes without saying is left out where it has no comment.
# Lines behind the top keep their numbers. With -v verbose=1 each copy of a comment is told.

function baseName(path) {
  sub(/.*\//, "", path)
  sub(/\..*/, "", path)
  return path
}

# The topic of the folder that a file is in. What users see of details belongs to the folder above.
# Small folders have no topic of their own.
function topicOf(path) {
  sub(/(\/detail)?\/[^\/]*$/, "", path)
  sub(/.*\//, "", path)
  if (path == "DS" || path == "anim") path = "util"
  return "folder_" path
}

# How programs include the file.
function includeOf(path) {
  sub("^" ENVIRON["PWD"] "/", "", path)
  sub(/\.in$/, "", path)
  return path
}

# Notes the lines of examples, which are indented by four blanks behind a blank line of a comment:
# all in `inCode`, the last one of each in `endsCode`.
function noteExample(line, number) {
  if (!sub(/^ *(\/\/\/?|\/\*\*?|\*\/?)( |$)/, "", line)) line = "."
  if (line ~ /^    / && (afterBlank || exampleEnd)) {
    inCode[exampleEnd = number] = 1
  } else if (line !~ /^ *$/ || !exampleEnd) {
    if (exampleEnd) endsCode[exampleEnd] = 1
    exampleEnd = 0
  }
  afterBlank = line ~ /^ *$/
}

# Notes in `internal` the lines of details, of specializations, and of declarations of classes that
# are defined elsewhere.
function noteInternal(line, number) {
  if (line ~ /^(class|struct) [A-Za-z]+;$/) {
    internal[number] = 1
    if (lineBefore ~ /^template <.*>$/) internal[number - 1] = 1
  }
  if (lineBefore ~ /^template <>$/ && line !~ /^(class|struct)/) {
    internal[number] = internal[number - 1] = 1
  }
  lineBefore = line
  if (line ~ /^namespace (vxKilnBase::)?detail \{$/ && FILENAME !~ /\/detail\//) inDetail = 1
  if (!inDetail) return
  internal[number] = 1
  line = codeOf(line)
  depth += gsub(/\{/, "", line) - gsub(/\}/, "", line)
  inDetail = depth > 0
}

# Reads the header ahead. `own` tells that it is not named after a class that it declares or names.
function lookAhead(name,   line, number, named) {
  while ((getline line <FILENAME) > 0) {
    ++number
    if (line ~ "^(class|struct|using) ([A-Z_]+ )?" name "( |$)") named = 1
    noteExample(line, number)
    noteInternal(line, number)
  }
  close(FILENAME)
  own = (!named || starred) && FILENAME !~ /\/detail\//
}

# Makes references of the pages and of the headers of plain functions that a comment names.
function linked(line,   text, file, label) {
  while (match(line, /docs\/[a-z-]+\.md|(^|[ (])[a-z]+_[a-z_]+\.h/)) {
    text = text substr(line, 1, RSTART - 1)
    file = substr(line, RSTART, RLENGTH)
    line = substr(line, RSTART + RLENGTH)
    if (file ~ /^[ (]/) {
      text = text substr(file, 1, 1)
      file = substr(file, 2)
    }
    label = baseName(file)
    gsub(/-/, "_", label)
    text = text "@ref " label " \"" file "\""
  }
  return text line
}

# Marks the lines of examples as code, which gets colours and links.
function marked(line) {
  if (!(FNR in inCode)) return linked(line)
  if (inExample) sub(/    /, "", line)
  else sub(/     ?/, "@code{.cpp}", line)
  inExample = !(FNR in endsCode)
  return line (inExample ? "" : " @endcode")
}

# The text of a line of a comment.
function commentText(line) {
  sub(/^ *(\/\*+|\*+\/|\*+|\/\/+) ?/, "", line)
  sub(/ *\*\/.*$/, "", line)
  return line
}

# Whether a line begins what every class has (a destructor, copying, moving, a default, swapping) or
# every range, what overrides a function whose comment holds, names a friend, or is a macro that
# declares something.
function goesWithoutSaying(line) {
  sub(/^ *(constexpr )?(virtual )?/, "", line)
  if (line ~ /^~[A-Za-z]+\(|= default;$| override[; ]|^friend (class|struct) .*;$/ ||
      line ~ /^friend (constexpr )?void swap\(|^using (value_type|(const_)?iterator) = / ||
      line ~ /^[A-Z_]+\([a-z]+\);$/) return 1
  if (line !~ /^([A-Za-z]+& operator=)?[A-Za-z=]*\((const )?[A-Za-z]+ ?&&? ?[a-z]*\)/) return 0
  split(line, words, /[&( ]+/)
  return line ~ "(\\(|const )" words[1] "&"
}

# The code of a line: without comments, with empty literals.
function codeOf(line) {
  gsub(/\\./, "", line)
  gsub(/"[^"]*"/, "\"\"", line)
  gsub(/'[^']*'/, "0", line)
  gsub(/\/\*[^*]*\*\//, "", line)
  sub(/\/\/.*/, "", line)
  return line
}

# Whether what stands in front of a brace makes a scope of declarations, and not a body.
function opensScope(head) {
  sub(/^ *template *<[^>]*> */, "", head)
  return head ~ /^ *(extern "|(typedef +)?(class|struct|union|namespace)( |$))/
}

# Follows a line of code. `head` is the declaration that goes on behind it, empty between two.
function follow(code,   i, c) {
  for (i = 1; i <= length(code); ++i) {
    c = substr(code, i, 1)
    if (c == "(") ++parentheses
    if (c == ")") --parentheses
    if (!parentheses && c == "{") {
      if (!bodies && opensScope(head)) {
        head = paragraph = section = ""
        continue
      }
      ++bodies
    }
    if (!parentheses && c == "}") {
      if (!bodies || (!--bodies && head ~ /\)/)) {
        head = ""
        continue
      }
    }
    if (!parentheses && !bodies && c == ";") head = ""
    else if (!bodies && (c != " " || head != "")) head = head c
  }
  if (head ~ /^(public|protected|private) *:$/) head = paragraph = section = ""
}

# Whether a line begins a declaration that shares the comment above.
function isDeclaration(line) {
  return line ~ /[A-Za-z~]/ && line !~ /^ *(\}|(public|protected|private) *:|namespace|extern ")/ &&
         line !~ /^ *(friend class|using enum|(class|struct) [A-Za-z]*;)/
}

# Adds a line of a comment to the first paragraph of the comment.
function addToParagraph(text) {
  if (!commented) {
    paragraph = section = ""
    complete = 0
  }
  commented = 1
  if (text ~ /^ *$/ && paragraph != "") complete = 1
  if (!complete) paragraph = paragraph " " text
}

FNR == 1 {
  name = baseName(FILENAME)
  topic = topicOf(FILENAME)
  starred = /^\/\*/
  lookAhead(name)
  atTop = 1
}

FNR in internal {
  print ""
  next
}

# In templates of headers.
/@PROJECT_VERSION/ {
  split(ENVIRON["KILNBASE_VERSION"], numbers, ".")
  sub(/@PROJECT_VERSION_MAJOR@/, numbers[1])
  sub(/@PROJECT_VERSION_MINOR@/, numbers[2])
  sub(/@PROJECT_VERSION_PATCH@/, numbers[3])
  sub(/@PROJECT_VERSION@/, ENVIRON["KILNBASE_VERSION"])
}

# The comment at the top. What it gets more lines is taken away from the include guard.
atTop && (starred || /^\/\//) {
  text = commentText(marked($0))
  if (own && FNR == 1) {
    title = text
    sub(/[.:]( .*)?$/, "", title)
    if (length(title) > 44) sub(/(,| \(| that ).*/, "", title)
    if (text == title ".") text = ""
    printf "/** @defgroup %s %s\n@brief `#include <%s>` @details ", name, title, includeOf(FILENAME)
    ++surplus
    parent = topic
    topic = name
  }
  if (own && text !~ /`|^    /) gsub(/</, "\\&lt;", text)
  if (own && text !~ /`|^    /) gsub(/\\/, "\\\\\\\\", text)
  if (starred && /\*\//) {
    atTop = 0
    text = text " @ingroup " parent " */ /** @addtogroup " topic " */ /** @{ */"
  }
  print own ? text : ""
  next
}
/^#pragma once$/ {
  atTop = 0
  print (own ? "@ingroup " parent " */ " : "") "/** @addtogroup " topic " */ /** @{ */"
  next
}
surplus && (/^$/ || /^#define [A-Z_]+_H$/) {
  --surplus
  next
}

# A namespace hides the open topic.
/^namespace .*\{$/ {
  print $0 " /** @addtogroup " topic " */ /** @{ */"
  next
}
/^\}  \/\/ namespace/ {
  print "/** @} */ " $0
  next
}

inComment || /^ *\/\*\*/ {
  addToParagraph(commentText($0))
  inComment = !/\*\//
  print marked($0)
  next
}

/^ *\/\/\/( |$)/ {
  addToParagraph(commentText($0))
  print marked($0)
  next
}

inRemark || /^ *(\/\/.*|\/\*.*)?$/ {
  if (inRemark || /^ *\/\*/) inRemark = !/\*\//
  if (head == "" && !bodies) {
    if (/^$/ && commented) section = paragraph
    paragraph = section
  }
  commented = 0
  print
  next
}

inDirective || /^ *#/ {
  inDirective = /\\$/
  if (/^#define/) commented = 0
  print
  next
}

skipping || (head == "" && !bodies && !commented && goesWithoutSaying($0)) {
  follow(codeOf($0))
  skipping = head != "" || bodies
  print ""
  next
}

{
  if (/\/\/\/<|\/\*\*</) paragraph = section = ""
  if (head == "" && !bodies && !commented && paragraph != "" && isDeclaration($0)) {
    if (verbose) printf "%s:%d:%s\n   %s\n", FILENAME, FNR, $0, paragraph >"/dev/stderr"
    printf "/** %s */ ", paragraph
  }
  commented = 0
  follow(codeOf($0))
  print
}

END { print "/** @} */" }
