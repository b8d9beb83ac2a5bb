#!/usr/bin/env python3
"""Writes what completes nuvctl's command line in bash, fish and zsh, from what its --help says.

Usage: completion.py NUVCTL FOLDER
"""

import re
import subprocess
import sys
from pathlib import Path

# What the words for values mean; any other is not completed.
FILES = {"FILE"}
KNOWN = {"KNOWN", "--printer"}  # names that 'nuvctl printers' gave
WORDS = {"KIND": "engine android panel"}
NOTE = "Made from nuvctl's --help by ./dev manuals, which also makes it anew."


class Command:
    """One (sub)command: what may follow it."""

    def __init__(self, nuvctl, path):
        self.path = path
        self.options = []  # names, value or "", what it does
        self.places = []  # positional arguments
        self.commands = []  # name, what it does
        text = subprocess.run([nuvctl, *path, "--help"], check=True, stdout=subprocess.PIPE, text=True).stdout
        # A name that is too long for its column has its text on the next line.
        text = re.sub(r"(\n  \S[^\n]*)\n {20,}(?=\S)", r"\1   ", text)
        section = ""
        for line in text.splitlines():
            if line.endswith(":") and not line.startswith(" "):
                section = line
                continue
            row = re.match(r"  (\S.*?)(?:   *(\S.*))?$", line)
            if not row or section in ("", "Example:", "Examples:", "Exit codes:"):
                continue
            words, help_text = row[1].split(" Excludes:")[0].split(), row[2] or ""
            if section == "Positionals:":
                self.places.append(words[0])
            elif words[0].startswith("-"):
                value = words[1].split("=")[0] if len(words) > 1 else ""
                self.options.append((words[0].split(","), value, help_text))
            elif " " not in row[1]:
                self.commands.append((words[0], help_text))

    def name(self):
        return " ".join(self.path)


def tree(nuvctl, path=()):
    command = Command(nuvctl, list(path))
    return [command] + [one for name, _ in command.commands for one in tree(nuvctl, (*path, name))]


def kind(word, option=""):
    """What completes a value."""
    if word in FILES:
        return "files"
    if word in KNOWN or option in KNOWN:
        return "known"
    return WORDS.get(word, "")


def option_kinds(commands):
    """Of each option that takes a value: what completes it."""
    return {names[-1]: kind(value, names[-1]) for command in commands
            for names, value, _ in command.options if value}


def quoted(text, quote="'\\''"):
    return "'" + text.replace("'", quote) + "'"


# ---- bash


def bash(commands):
    values = option_kinds(commands)
    general = " ".join(name for names, _, _ in commands[0].options for name in names)
    rows = []
    for one in commands:
        own = " ".join(name for names, _, _ in one.options for name in names if names[-1] not in general)
        subs = " ".join(name for name, _ in one.commands)
        # A blank between the words of one place would part it in two.
        places = " ".join(kind(word).replace(" ", ",") or "-" for word in one.places)
        rows.append(f"    '{one.name()}') options='{own}' words='{subs}' places=({places}) ;;")
    rows = "\n".join(rows)
    known = "|".join(n for n, k in values.items() if k == "known")
    other = "|".join(n for n, k in values.items() if k != "known")
    steps = "|".join(quoted(one.name()) for one in commands if one.path)
    return f"""# {NOTE}

_nuvctl() {{
  local cur=${{COMP_WORDS[COMP_CWORD]}} prev=${{COMP_WORDS[COMP_CWORD - 1]}}
  local path='' place=0 i word options='' words='' places=() wanted=''
  # "--printer=lab" comes in three words.
  if [ "$cur" = = ]; then cur=''; elif [ "$prev" = = ]; then prev=${{COMP_WORDS[COMP_CWORD - 2]}}; fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${{COMP_WORDS[i]}}
    case $word in
      {known}|{other}) [ "${{COMP_WORDS[i + 1]}}" = = ] && ((++i)); ((++i)); continue ;;
      -*|=) continue ;;
    esac
    case "${{path:+$path }}$word" in
      {steps}) path="${{path:+$path }}$word" place=0 ;;
      *) ((++place)) ;;
    esac
  done
  case $path in
{rows}
  esac
  COMPREPLY=()
  case $prev in
    {known}) wanted=known ;;
    {other}) return ;;
    *)
      case $cur in
        -*) mapfile -t COMPREPLY < <(compgen -W "$options {general}" -- "$cur"); return ;;
      esac
      wanted=${{places[place]:--}}
      [ -n "$words" ] && wanted=$words
      ;;
  esac
  case $wanted in
    -) ;;
    files) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    known)
      while IFS= read -r word; do
        printf -v word %q "$word"
        [[ $word == "$cur"* ]] && COMPREPLY+=("$word")
      done < <(nuvctl printers list --names 2>/dev/null)
      ;;
    *) mapfile -t COMPREPLY < <(compgen -W "${{wanted//,/ }}" -- "$cur") ;;
  esac
}}
complete -F _nuvctl nuvctl
"""


# ---- fish


def fish_text(text):
    return quoted(text.replace("\\", "\\\\"), "\\'")


FISH_VALUES = {"files": "-F", "known": "-x -a '(nuvctl printers list --names 2>/dev/null)'", "": "-x"}


def fish_option(command, names, value, help_text):
    words = " ".join(("-l " if name.startswith("--") else "-s ") + name.lstrip("-") for name in names)
    takes = " " + FISH_VALUES[kind(value, names[-1])] if value else ""
    where = "" if not command.path else f" -n '__nuvctl_at {command.name()}'"
    return f"complete -c nuvctl{where} {words}{takes} -d {fish_text(help_text)}"


def fish(commands):
    valued = " ".join(option_kinds(commands))
    paths = " ".join(quoted(one.name()) for one in commands if one.path)
    lines = [f"""# {NOTE}

# Says which subcommand has been typed, then how many words behind it.
function __nuvctl_path
    set -l path
    set -l place 0
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
        else if contains -- $word {valued}
            set skip 1
        else if string match -q -- '-*' $word
            continue
        else if contains -- (string trim -- "$path $word") {paths}
            set path (string trim -- "$path $word")
            set place 0
        else
            set place (math $place + 1)
        end
    end
    echo $path
    echo $place
end
function __nuvctl_at
    set -l now (__nuvctl_path)
    test "$now[1]" = "$argv"
end
function __nuvctl_place
    set -l now (__nuvctl_path)
    test "$now[1]" = "$argv[2..-1]" -a "$now[2]" = $argv[1]
end

complete -c nuvctl -f"""]
    general = {names[-1] for names, _, _ in commands[0].options}
    for one in commands:
        for name, help_text in one.commands:
            lines.append(f"complete -c nuvctl -n '__nuvctl_place 0 {one.name()}' -a {name} -d {fish_text(help_text)}")
        for names, value, help_text in one.options:
            if not one.path or names[-1] not in general:
                lines.append(fish_option(one, names, value, help_text))
        for place, word in enumerate(one.places):
            values = kind(word)
            if values:
                what = FISH_VALUES.get(values, f"-a {quoted(values)}")
                lines.append(f"complete -c nuvctl -n '__nuvctl_place {place} {one.name()}' {what}")
    return "\n".join(lines) + "\n"


# ---- zsh

ZSH_VALUES = {"files": "_files", "known": "_nuvctl_known", "": " "}


def zsh_text(text):
    return re.sub(r"([\[\]:\\])", r"\\\1", text)


def zsh_option(names, value, help_text, repeats):
    takes = f":{value}:{ZSH_VALUES[kind(value, names[-1])]}" if value else ""
    return [quoted(f"{'*' if repeats else ''}{name}{'=' if value and name.startswith('--') else ''}"
                   f"[{zsh_text(help_text)}]{takes}")
            for name in names]


def zsh(commands):
    cases = []
    general = {names[-1] for names, _, _ in commands[0].options}
    for one in commands:
        words = [word for option in one.options if not one.path or option[0][-1] not in general
                 for word in zsh_option(*option, option[0][-1] == "--printer")]
        for place, word in enumerate(one.places, 1):
            values = kind(word)
            action = ZSH_VALUES.get(values, f"({values})")
            words.append(quoted(f"{place}:{word}:{action}"))
        rows = "".join(f"\n        {word}" for word in words)
        names = " ".join(quoted(f"{name}:{zsh_text(text)}")
                         for name, text in one.commands)
        target = "general" if not one.path else "own"
        cases.append(f"    '{one.name()}')\n      {target}=({rows}\n      )\n      commands=({names})\n      ;;")
    root, cases = cases[0], "\n".join(cases[1:])
    root = root.split("\n", 1)[1].rsplit("\n", 1)[0]
    steps = " ".join(quoted(one.name()) for one in commands if one.path)
    valued = "|".join(option_kinds(commands))
    return f"""#compdef nuvctl
# {NOTE}

_nuvctl_known() {{
  local -a names
  names=("${{(@f)$(nuvctl printers list --names 2>/dev/null)}}")
  _wanted printers expl printer compadd -a names
}}

_nuvctl() {{
  local -a general own commands paths rest
  local path_now='' word expl
  integer i
  paths=({steps})
  for ((i = 2; i < CURRENT; ++i)); do
    word=${{words[i]}}
    case $word in
      {valued}) rest+=($word); ((i + 1 < CURRENT)) && rest+=("${{words[++i]}}"); continue ;;
      -*) rest+=($word); continue ;;
    esac
    if ((${{paths[(Ie)${{path_now:+$path_now }}$word]}})); then
      path_now="${{path_now:+$path_now }}$word"
    else
      rest+=("$word")
    fi
  done
{root}
  case $path_now in
{cases}
  esac
  # The words of the subcommand are done with, wherever options stood between them.
  words=(nuvctl $rest "${{(@)words[i,-1]}}")
  CURRENT=$((${{#rest}} + 2))
  if ((${{#commands}})); then
    _arguments -S $general $own '1:command:->command' && return
    _describe command commands
  else
    _arguments -S $general $own
  fi
}}

_nuvctl "$@"
"""


def main():
    nuvctl, folder = sys.argv[1], Path(sys.argv[2])
    commands = tree(nuvctl)
    for name, make in (("nuvctl.bash", bash), ("nuvctl.fish", fish), ("_nuvctl", zsh)):
        (folder / name).write_text(make(commands))


if __name__ == "__main__":
    main()
