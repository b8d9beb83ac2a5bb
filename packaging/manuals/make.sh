#!/usr/bin/env bash
# Makes the man pages and what completes command lines, from the --help of the programs and their READMEs.
# Usage: make.sh BIN_FOLDER FOLDER
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$1 folder=$2
root=$here/../..
version=$("$bin/nuvctl" --version | sed 's/.* //')

# chapters README: what stands behind its first heading, for people who use the program, as roff.
chapters() {
  sed -e '1,/^## /{/^## /!d}' -e '/^## Source layout/,$d' -e 's/\[\([^]]*\)\]([^)]*)/\1/g' "$1" |
    lowdown -s -tman | preconv -r -e utf-8 |
    sed -e '1,/^\.TH/d' -e 's/^\.SH/.SS/' -e 's/\\fC/\\fB/g' \
      -e 's/\(,\)\([a-z]*=\)/\1\\:\2/g' -e 's|\(/\)\([A-Za-z]\)|\1\\:\2|g'  # a table's cell is narrow
}

# subcommands PROGRAM [SUBCOMMAND...]: the help of each.
subcommands() {
  local program=$1 names=("${@:2}") commands sub
  commands=$("$bin/$program" "${names[@]}" --help |
    awk '/^[A-Z].*:$/ { rows = !/^(Options|Positionals|Examples?|Exit codes):$/; next }
         rows && /^  [a-z]/ { print $1 }')
  for sub in $commands; do
    printf '.SS %s\n.nf\n' "$program ${names[*]:+${names[*]} }$sub"
    "$bin/$program" "${names[@]}" "$sub" --help |
      sed -e '/^Example/,$d' -e '/^  -h,--help /d' -e 's/\\/\\e/g' -e 's/^[.'"'"']/\\\&&/' -e 's/-/\\-/g' |
      cat -s | sed -z 's/Options:\n\n//'
    printf '.fi\n'
    subcommands "$program" "${names[@]}" "$sub"
  done
}

# page PROGRAM SUMMARY README
page() {
  local include
  include=$(mktemp)
  {
    echo '[>COMMANDS]'
    subcommands "$1"
    printf '[MANUAL]\n.ds AD l\n.ad l\n.nh\n'
    chapters "$3"
  } > "$include"
  # No date: the same sources give the same page.
  help2man --no-info --no-discard-stderr --section 1 --name "$2" --version-string "$version" \
    --source "NuvConnect5 $version" --manual 'NuvConnect5' --include "$include" "$bin/$1" |
    sed -e "1i '\\\\\" t" -e '/^\.TH/s/"[A-Z][a-z]* [0-9]*"/""/' > "$folder/$1.1"  # it has tables
  rm "$include"
}

page nuvctl 'find resin 3D printers, ask them, and send them jobs' "$root/tools/nuvctl/README.md"
page nuvsim 'simulate resin 3D printers on the network and on USB' "$root/tools/nuvsim/README.md"
page nuvfile 'make, show and verify print files' "$root/nuvfile/README.md"
"$here/completion.py" "$bin/nuvctl" "$folder"
