# Looks through the pages of the site:  cd SITE; find . -type f | awk -f check.awk
#
# Fails, and says which, when a page links to a page, place or picture that is not there, or when
# anything is fetched from a host. Doxygen announces sections of nested classes and macros, and then
# leaves them out when none of these is public. What is searched through is not a page.

function complain(what) {
  print page ": " what
  failed = 1
}

# Notes the places of a page, and where it leads.
function read(page,   line, tag) {
  while ((getline line <page) > 0) {
    while (match(line, /<[a-z][^>]*>/)) {
      tag = substr(line, RSTART, RLENGTH)
      line = substr(line, RSTART + RLENGTH)
      if (match(tag, / (id|name)="[^"]*"/)) {
        place = substr(tag, RSTART, RLENGTH)
        gsub(/^[^"]*"|"$/, "", place)
        places[page "#" place] = 1
      }
      if (!match(tag, / (href|src|data)="[^"]*"/)) continue
      target = substr(tag, RSTART, RLENGTH)
      gsub(/^[^"]*"|"$/, "", target)
      if (target ~ /^[a-z]+:/ || target ~ /^\/\//) {
        if (tag !~ /^<a /) complain("fetches " target)
      } else if (target != "" && target !~ /^#?$/) {
        links[++count] = page SUBSEP target
      }
    }
    if (page ~ /\.css$/ && line ~ /(@import|url\() *["']?(https?:)?\/\//) complain("fetches " line)
  }
  close(page)
}

{
  sub(/^\.\//, "")
  page = $0
  files[page] = 1
  if (/\.(html|css)$/ && !/^search\//) read(page)
}

END {
  for (i = 1; i <= count; ++i) {
    split(links[i], link, SUBSEP)
    page = link[1]
    target = link[2] ~ /^#/ ? page link[2] : link[2]
    file = target
    sub(/[?#].*/, "", file)
    if (!(file in files)) {
      complain("no file " target)
    } else if (target ~ /\.html#/ && !(target in places)) {
      if (target !~ /#(nested-classes|define-members)$/) complain("no place " target)
    }
  }
  exit failed
}
