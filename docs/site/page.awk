# Prepares a page for Doxygen:  awk -f page.awk PAGE.md
#
# - A page that has no label gets the one of its file: decompositions.md becomes {#decompositions}.
#   A README.md gets its title.
# - What the lists of pages name at the start of an item lies under that list.
# - The percent signs of formats are no commands.

function labelOf(path,   folder) {
  folder = path ~ /(^|\/)guide\// ? "guide_" : ""
  sub(/.*\//, "", path)
  sub(/\.md.*/, "", path)
  gsub(/-/, "_", path)
  return folder path
}

FNR == 1 && /^# / && !/\{#/ {
  $0 = $0 " {#" (FILENAME ~ /README/ ? substr($0, 3) : labelOf(FILENAME)) "}"
}

FILENAME ~ /\/(formats|guides|start)\.md$/ && match($0, /^- \[[^]]*\]\([a-z\/-]*\.md\)/) {
  title = target = substr($0, 4, RLENGTH - 4)
  sub(/\].*/, "", title)
  sub(/.*\(/, "", target)
  $0 = "- \\subpage " labelOf(target) " \"" title "\"" substr($0, RLENGTH + 1)
}

/^```/ { inCode = !inCode }
!inCode && !/^    / { gsub(/%[a-zA-Z.0-9]/, "%&") }

{ print }
