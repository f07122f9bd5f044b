# Makes a source of the examples in the comments of headers:
#   awk -v language=cpp -f extract.awk HEADER...   a test of each example, and of each C header as C
#   awk -v language=c -f extract.awk HEADER        the function that runs the examples of a C header
#
# An example is a run of comment lines after a blank one, indented by four blanks more than text.
# Its types and functions stand for themselves; its other lines are the body of a function, which
# runs. An example without other lines runs its functions without parameters. Every line keeps the
# name of its header and its number there. The usual standard headers and all public ones are
# included; an example may include others.

function idOf(file) {
  gsub(/[^A-Za-z0-9]/, "_", file)
  return file
}

# The code of a line without comments and blanks at its ends.
function codeOf(line) {
  gsub(/\/\*[^*]*\*\//, "", line)
  sub(/\/\/.*/, "", line)
  gsub(/^ +| +$/, "", line)
  return line
}

# Whether a statement that begins with this text, up to its first brace or semicolon, is a type, or
# the like, or a function.
function isType(head) {
  return head ~ /^(class|enum|namespace|struct|template|typedef|union|using)[^=(;]*\{/ ||
         head ~ /^(template|typedef|using) /
}
function isFunction(head) {
  return head ~ /^[A-Za-z_][^=;]*[ *&][A-Za-z_0-9]+\(.*\{/ && head !~ /^(else|for|if|switch|while)[ (]/
}

# Adds lines first to last of the example to the text of its functions or of its body.
function place(first, last, kind, head,   i, text, name) {
  text = "#line " numberOf[first] " \"" file "\"\n"
  for (i = first; i <= last; ++i) text = text lines[i] "\n"
  if (kind == "directive") {
    top = top text
  } else if (kind == "statement") {
    body = body text
  } else {
    if (sub(/^int main\(/, "int exampleMain(", head)) sub(/int main\(/, "int exampleMain(", text)
    if (kind == "function" && language == "c" && head !~ /^static /)
      sub(/\n/, "\nstatic __attribute__((unused)) ", text)
    definitions = definitions text
    if (kind == "function" && head ~ /^[^(]*\((void)?\)/) {
      name = head
      sub(/\(.*/, "", name)
      sub(/.*[ *&]/, "", name)
      calls = calls name "();\n"
    }
  }
}

# Takes the example apart into statements. One that opens a brace ends at the line that begins with
# the closing brace.
function takeApart(   first, last, head, kind) {
  definitions = body = calls = ""
  for (first = 1; first <= count; first = last + 1) {
    last = first
    head = codeOf(lines[first])
    if (head == "") continue
    if (head ~ /^#/) {
      place(first, last, "directive", head)
      continue
    }
    while (last < count && head !~ /[;{}]$/) head = head " " codeOf(lines[++last])
    kind = lines[first] ~ /^ / ? "statement" : isType(head) ? "type" : \
           isFunction(head) ? "function" : "statement"
    if (kind != "statement" && head ~ /\{$/)
      while (last < count && lines[++last] !~ /^}/) continue
    place(first, last, kind, head)
  }
  if (body == "") body = calls
}

function finishExample(   name) {
  while (count > 0 && lines[count] ~ /^ *$/) --count
  if (count == 0) return
  takeApart()
  name = idOf(file) "_line_" numberOf[1]
  hasExamples[file] = 1
  if (language == "c") {
    text = text definitions "static void " name "(void) {\n" body "}\n"
    all = all "  " name "();\n"
  } else {
    text = text "namespace " name " {\n" definitions \
                "TEST(Examples, " name ") {\n" body "}\n}\n"
  }
  count = 0
}

FNR == 1 {
  finishExample()
  file = FILENAME
  if (language != "c") includes = includes "#include <" file ">\n"
  afterBlank = inExample = 0
}
/^#ifdef __cplusplus/ { isForC[file] = 1 }
{
  line = $0
  isComment = sub(/^ *(\/\/\/?|\/\*\*?|\*\/?)( |$)/, "", line)
  if (isComment && line ~ /^    / && (afterBlank || inExample)) {
    inExample = 1
    lines[++count] = substr(line, 5)
    numberOf[count] = FNR
  } else if (isComment && line ~ /^ *$/ && inExample) {
    lines[++count] = ""
    numberOf[count] = FNR
  } else {
    finishExample()
    inExample = 0
  }
  afterBlank = isComment && line ~ /^ *$/
}

END {
  finishExample()
  if (language == "c") {
    print "#include <math.h>\n#include <stdint.h>\n#include <stdio.h>\n#include <stdlib.h>\n#include <string.h>\n"
    print "#include \"headersForC.h\"\n"
    print top text "void examples_" idOf(file) "(void);\nvoid examples_" idOf(file) "(void) {"
    print all "}"
  } else {
    print "#include <algorithm>\n#include <cmath>\n#include <cstdint>\n#include <cstdio>\n#include <cstring>\n#include <vector>\n"
    print "#include <gtest/gtest.h>\n"
    print includes top text
    for (file in isForC) {
      if (!(file in hasExamples)) continue
      print "extern \"C\" void examples_" idOf(file) "();"
      print "TEST(ExamplesInC, " idOf(file) ") {\n  examples_" idOf(file) "();\n}"
    }
  }
}
