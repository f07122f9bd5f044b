# Prepares a program for the snippets of pages:  awk -f snippet.awk PROGRAM
#
# What stands between two marks loses the indentation of the marks.

/^ *(\/\/|#)! \[/ {
  match($0, /[^ ]/)
  margin = sprintf("%" RSTART - 1 "s", "")
  inside = !inside
}

inside { sub("^" margin, "") }

{ print }
