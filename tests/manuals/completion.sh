#!/usr/bin/env bash
# Command lines are completed in bash, fish and zsh, by words that nuvctl takes.
# Usage: completion.sh BIN_FOLDER FOLDER_OF_COMPLETIONS
completions=$(cd "$2" && pwd)
. "$(dirname "${BASH_SOURCE[0]}")/../system/lib.sh"
PATH=$bin:$PATH
touch crown.nuv
expect 0 nuvctl printers add "lab one" --address 127.0.0.9

# The last word of a line is the one to complete.
in_bash() {
  # shellcheck disable=SC2016
  bash -c '. "$0"; read -ra COMP_WORDS <<< "$1"; COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
           _nuvctl; printf "%s\n" "${COMPREPLY[@]}"' "$completions/nuvctl.bash" "$1"
}
in_fish() { HOME=$work fish -c "source '$completions/nuvctl.fish'; complete -C '$1'"; }
# A terminal shows it: what is typed, the tab, and what comes of it.
in_zsh() {
  # shellcheck disable=SC2016
  HOME=$work timeout 20 zsh -f -c 'zmodload zsh/zpty; zpty z zsh -f -i
    zpty -w z "unset zle_bracketed_paste; fpath=($1 \$fpath); autoload -Uz compinit; compinit -u -D; echo RE\"\"ADY"
    zpty -r z seen "*READY*"; zpty -w -n z "$2"$'"'\\t'"'; zpty -r z seen "*$3*" && print -r -- "$3"' \
    _ "$completions" "$1" "$2"
}

# offers LINE WORD...
offers() {
  local word
  for word in "${@:2}"; do
    in_bash "$1" > out 2> err
    grep -qFx -- "${word// /\\ }" out || wrong "bash: $1: no $word"
    in_fish "$1" > out 2> err
    cut -f 1 out | grep -qFx -- "$word" || wrong "fish: $1: no $word"
    in_zsh "$1" "${word// /\\\\ }" > out 2> err || wrong "zsh: $1: no $word"
  done
}

offers 'nuvctl stat' status
offers 'nuvctl printers re' remove rename
offers 'nuvctl --timeout 5 stat' status
offers 'nuvctl --json send --dry' --dry-run
offers 'nuvctl send cr' crown.nuv
offers 'nuvctl firmware pan' panel
offers 'nuvctl firmware panel cr' crown.nuv
offers 'nuvctl status --printer lab' 'lab one'
offers 'nuvctl printers remove lab' 'lab one'
for line in 'nuvctl status cr' 'nuvctl --timeout st' 'nuvctl printers stat'; do
  [ -z "$(in_bash "$line")" ] || wrong "bash: $line: $(in_bash "$line")"
  [ -z "$(in_fish "$line")" ] || wrong "fish: $line: $(in_fish "$line")"
done
finish "three shells complete nuvctl"
