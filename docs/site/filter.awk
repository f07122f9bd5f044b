# Prepares a header for Doxygen:  awk -f filter.awk HEADER
#
# - The comment at the top becomes the page of a topic, under the topic of the folder. A header that
#   is named after its class has no topic: it adds to the one of its folder.
# - A comment holds for all declarations that follow line by line, without a blank line or another
#   comment between. Doxygen knows one declaration a comment, so the others get a copy of the first
#   paragraph.
# - Destructors and defaulted functions without a comment are left out.
# Every line keeps its number.

function baseName(path) {
  sub(/.*\//, "", path)
  sub(/\..*/, "", path)
  return path
}

# The name of the folder that a file is in.
function folderOf(path) {
  sub(/\/[^\/]*$/, "", path)
  sub(/.*\//, "", path)
  return path
}

# Whether the header declares a class, or a name of a class, that has the name of the header.
function isNamedAfterClass(name,   line, found, first) {
  while ((getline line <FILENAME) > 0) {
    if (!first) first = line
    if (line ~ "^(class|struct|using) ([A-Z_]+ )?" name "( |$)") found = 1
  }
  close(FILENAME)
  return found && first !~ /^\/\*/
}

# The text of a line of a comment.
function commentText(line) {
  sub(/^ *(\/\*+|\*+\/|\*+|\/\/+) ?/, "", line)
  sub(/ *\*\/.*$/, "", line)
  return line
}

# What every class has and what needs no word.
function goesWithoutSaying(line) {
  return line ~ /= default;$/ || line ~ /^ *(constexpr )?(virtual )?~[A-Za-z]+\(.*[;}]$/
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
  sub(/^ *template *<[^{]*> */, "", head)
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
        head = paragraph = ""
        continue
      }
      ++bodies
    }
    if (!parentheses && c == "}") {
      if (!bodies) head = "}"
      else if (!--bodies && head ~ /\)/) {
        head = ""
        continue
      }
    }
    if (!parentheses && !bodies && c == ";") head = ""
    else if (!bodies && (c != " " || head != "")) head = head c
  }
  if (head ~ /^(public|protected|private) *:$/) head = paragraph = ""
  if (head ~ /^\}( *\/\/.*)?$/) head = ""
}

function isDeclaration(line) {
  return line ~ /[A-Za-z~]/ &&
         line !~ /^ *(#|\}|(public|protected|private) *:|friend class|namespace|extern "|using enum|(class|struct) [A-Za-z]*;)/
}

# Adds a line of a comment to the first paragraph of the comment.
function addToParagraph(text) {
  if (!commented) {
    paragraph = ""
    complete = 0
  }
  commented = 1
  if (text ~ /^ *$/ && paragraph != "") complete = 1
  if (!complete) paragraph = paragraph " " text
}

FNR == 1 {
  name = baseName(FILENAME)
  topic = "folder_" folderOf(FILENAME)
  own = !isNamedAfterClass(name)
  atTop = 1
  starred = /^\/\*/
}

# The first line behind a comment of slashes is `#pragma once`, and gives way.
atTop && (starred || /^(\/\/|#pragma once)/) {
  text = commentText($0)
  if (own && FNR == 1) {
    title = text
    sub(/[.:]( .*)?$/, "", title)
    printf "/** @defgroup %s %s\n@ingroup %s\n@brief ", name, title, topic
    topic = name
  }
  if (/^#/) text = ""
  if (/\*\/|^#/) {
    atTop = 0
    text = (own ? text " */ " : "") "/** @addtogroup " topic " */ /** @{ */"
  }
  print own || !atTop ? text : ""
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
  print
  next
}

/^ *\/\/\/( |$)/ {
  addToParagraph(commentText($0))
  print
  next
}

/^ *(\/\/.*)?$/ {
  if (head == "" && !bodies) paragraph = ""
  commented = 0
  print
  next
}

head == "" && !bodies && !commented && goesWithoutSaying($0) {
  print ""
  next
}

{
  if (/\/\/\/<|\/\*\*</) paragraph = ""
  if (head == "" && !bodies && !commented && paragraph != "" && isDeclaration($0)) {
    if (verbose) printf "%s:%d:%s\n   %s\n", FILENAME, FNR, $0, paragraph >"/dev/stderr"
    printf "/** %s */ ", paragraph
  }
  commented = 0
  if (!/^ *#/) follow(codeOf($0))
  print
}

END { print "/** @} */" }
