#!/usr/bin/env bash
# End to end: the built `tessarine` binary, with its per-user folder inside a
# temporary folder. Encodes PPM frames, renders when a sized effect can, and
# checks exit codes; when ImageMagick's identify is on PATH it must agree on
# frame count and size.
set -euo pipefail
bin=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TESSARINE_APPDATA="$work/appdata"
cd "$work"

fail() { echo "smoke: $*" >&2; exit 1; }

# Frame count and logical screen size as identify sees them, e.g. "6 20x14".
identify_summary() {
  local frames sizes
  frames=$(identify "$1" | wc -l)
  sizes=$(identify -format '%Wx%H\n' "$1" | sort -u | tr '\n' ' ')
  echo "$frames ${sizes% }"
}

"$bin" --version | grep -q '^tessarine ' || fail "--version"
[ "$("$bin" list | wc -l)" -eq 20 ] || fail "list does not show twenty effects"

for i in 0 1 2 3 4 5; do
  { printf 'P6\n20 14\n255\n'; head -c 840 < <(yes "$(printf "\\x$(printf %02x $((i * 40 + 10)))\\x20\\x30")"); } > "f$i.ppm"
done
"$bin" encode f0.ppm f1.ppm f2.ppm f3.ppm f4.ppm f5.ppm --no-config --custom-palette --supercompress \
  -q -o enc.gif || fail "encode"
[ -s enc.gif ] || fail "encode wrote nothing"
if command -v identify >/dev/null; then
  [ "$(identify_summary enc.gif)" = "6 20x14" ] || fail "identify sees $(identify_summary enc.gif)"
fi

# Through a pipe, the same bytes as the file.
"$bin" encode f0.ppm f1.ppm f2.ppm f3.ppm f4.ppm f5.ppm --no-config --custom-palette --supercompress \
  -q -o - | cat > piped.gif || fail "encode -o -"
cmp -s enc.gif piped.gif || fail "-o - wrote other bytes than -o enc.gif"
rm piped.gif

if "$bin" list | grep -Eq '^ *1  Bubbles +ready$'; then
  "$bin" render --no-config -e Bubbles -s Frames=4 -s Width=32 -s Depth=32 -q -o bubbles.gif || fail "render"
  if command -v identify >/dev/null; then
    [ "$(identify_summary bubbles.gif)" = "4 32x32" ] || fail "identify sees $(identify_summary bubbles.gif)"
  fi
fi

set +e
"$bin" render --frobnicate >/dev/null 2>&1; [ $? -eq 2 ] || fail "unknown option should exit 2"
"$bin" encode missing.ppm -o never.gif >/dev/null 2>&1; [ $? -eq 1 ] || fail "missing frame should exit 1"
set -e
[ ! -e never.gif ] || fail "a failed encode left never.gif"
[ -z "$(ls -A | grep -v -E '^(f[0-5]\.ppm|enc\.gif|bubbles\.gif|appdata)$')" ] || fail "stray files: $(ls -A)"
echo "smoke: ok"
