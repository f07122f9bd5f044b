# Prepares a page for Doxygen:  awk -f page.awk PAGE.md
#
# Gives a page that has no label the one of its file: decompositions.md becomes {#decompositions}.

FNR == 1 && /^# / && !/\{#/ {
  label = FILENAME
  sub(/.*\//, "", label)
  sub(/\.md$/, "", label)
  gsub(/-/, "_", label)
  $0 = $0 " {#" label "}"
}

{ print }
