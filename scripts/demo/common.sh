# What the demonstration scripts share: section titles, and commands printed
# in a form that runs when pasted into a shell, then run.
#   source scripts/demo/common.sh; tarvex=PATH_TO_TOOL

step() { printf '\n== %s\n' "$*"; }

# A word as a shell reads it back: bare when it holds only characters that
# no shell treats specially, else in single quotes.
quoted() {
  if [[ $1 =~ ^[A-Za-z0-9_./:=@%+,-]+$ ]]; then
    printf '%s' "$1"
  else
    printf "'%s'" "${1//\'/\'\\\'\'}"
  fi
}

show() {
  printf '$ tarvex'
  for word in "$@"; do printf ' %s' "$(quoted "$word")"; done
  printf '\n'
  "$tarvex" "$@" || true
}
