#!/usr/bin/env bash
# Presses the buttons of morlaWarning on a display of its own: morlaWarning_gui.sh PROGRAM FOLDER
# Leaves pictures of the screen in FOLDER, as X window dumps.
set -euo pipefail
program=$1
folder=$2

rm -rf "$folder"
mkdir -p "$folder"
coproc XVFB { exec Xvfb -displayfd 1 -noreset -screen 0 1280x800x24 -nolisten tcp -fbdir "$folder" 2>/dev/null; }
server=$XVFB_PID
trap 'kill "$server" 2>/dev/null || true' EXIT
read -r number <&"${XVFB[0]}"
export DISPLAY=:$number
unset WAYLAND_DISPLAY

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

# Starts the program and waits for its window: show ARGUMENT...
show() {
  timeout 60 "$program" -t 'Köln 中文' "$@" &
  warning=$!
  window=$(timeout 30 xdotool search --sync --onlyvisible --name 'Köln 中文')
  xdotool windowfocus --sync "$window"
}

# Fails unless the program ends with this exit code: expect CODE WHAT
expect() {
  local code=0
  wait $warning || code=$?
  [ $code -eq "$1" ] || fail "exit code $code, not $1, after $2"
}

# Waits until the screen shows the same twice, and other than in the file: picture NAME [OTHER]
picture() {
  for _ in {1..100}; do
    cp "$folder/Xvfb_screen0" "$folder/$1.xwd"
    sleep 0.2
    if cmp -s "$folder/Xvfb_screen0" "$folder/$1.xwd" &&
      ! cmp -s "$folder/${2:-empty}.xwd" "$folder/$1.xwd"; then
      return
    fi
  done
  fail "the screen stays as in the picture ${2:-empty}"
}

# Fails unless the whole window is on the screen.
expectOnScreen() {
  local X Y WIDTH HEIGHT
  eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(X|Y|WIDTH|HEIGHT)=[0-9-]+$')"
  ((X >= 0 && Y >= 0 && X + WIDTH <= 1280 && Y + HEIGHT <= 800)) ||
    fail "a window of $WIDTH x $HEIGHT at $X, $Y"
}

# Clicks in the middle of a button of a row of three: clickButton NUMBER
clickButton() {
  local WIDTH HEIGHT
  eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(WIDTH|HEIGHT)=[0-9]+$')"
  xdotool mousemove --window "$window" $((WIDTH * (2 * $1 - 1) / 6)) $((HEIGHT - 35)) click 1
}

cp "$folder/Xvfb_screen0" "$folder/empty.xwd"
question=(-s 'Die Fläche ist offen.' -s 'поверхность' -f 'more' -b Save -b Über -b 'A & _b')

while read -ra keys; do
  show "${question[@]}"
  xdotool key "${keys[@]:1}"
  expect "${keys[0]}" "the keys ${keys[*]:1}"
done <<'KEYS'
1 Return
2 Tab Return
3 Tab Tab space
0 Tab Escape
KEYS

for number in 1 2 3; do
  show "${question[@]}"
  picture question
  expectOnScreen
  clickButton $number
  expect $number "a click on button $number"
done

show "${question[@]}"
xdotool windowkill "$window"
expect 0 'the end of the connection to the display'

show "${question[@]}" -f "$(printf 'a long text %s ' {1..2000})"
picture long
expectOnScreen
xdotool key Next
picture scrolled long
xdotool key shift+Tab shift+Tab Return
expect 3 'the button before the first one and the text'

many=()
for i in {1..255}; do many+=(-s "Line $i" -b "B$i"); done
show "${many[@]}"
picture many
expectOnScreen
xdotool key shift+Tab shift+Tab Return
expect 255 'the last of many buttons'

show "${question[@]}"
kill "$server"
wait "$server" || true
expect 0 'the end of the display'
