# Made from nuvctl's --help by ./dev manuals, which also makes it anew.

_nuvctl() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  local path='' place=0 i word options='' words='' places=() wanted=''
  # "--printer=lab" comes in three words.
  if [ "$cur" = = ]; then cur=''; elif [ "$prev" = = ]; then prev=${COMP_WORDS[COMP_CWORD - 2]}; fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      --printer|--timeout|--port|--serial|--address|--index|--interval|--give-up|--then|--laser|--last|--mark|--retry) [ "${COMP_WORDS[i + 1]}" = = ] && ((++i)); ((++i)); continue ;;
      -*|=) continue ;;
    esac
    case "${path:+$path }$word" in
      'list'|'printers'|'printers list'|'printers add'|'printers remove'|'printers rename'|'doctor'|'info'|'status'|'watch'|'resin'|'sensors'|'jobs'|'versions'|'tank'|'leds'|'send'|'cancel'|'gcode'|'firmware'|'nickname'|'laser-power'|'z-compensation'|'scaling'|'skip-warmup'|'wifi'|'wifi list'|'wifi status'|'wifi connect'|'wifi disconnect'|'raw') path="${path:+$path }$word" place=0 ;;
      *) ((++place)) ;;
    esac
  done
  case $path in
    '') options='' words='list printers doctor info status watch resin sensors jobs versions tank leds send cancel gcode firmware nickname laser-power z-compensation scaling skip-warmup wifi raw' places=() ;;
    'list') options='' words='' places=() ;;
    'printers') options='' words='list add remove rename' places=() ;;
    'printers list') options='--names' words='' places=() ;;
    'printers add') options='--replace' words='' places=(-) ;;
    'printers remove') options='' words='' places=(known) ;;
    'printers rename') options='' words='' places=(known -) ;;
    'doctor') options='' words='' places=() ;;
    'info') options='--all' words='' places=() ;;
    'status') options='--all' words='' places=() ;;
    'watch') options='--interval --give-up --then --all' words='' places=() ;;
    'resin') options='--all' words='' places=() ;;
    'sensors') options='--laser --flash' words='' places=() ;;
    'jobs') options='--last --long --mark' words='' places=() ;;
    'versions') options='--all' words='' places=() ;;
    'tank') options='' words='' places=() ;;
    'leds') options='' words='' places=() ;;
    'send') options='--watch --interval --give-up --then --force --dry-run --retry --progress' words='' places=(files) ;;
    'cancel') options='' words='' places=() ;;
    'gcode') options='' words='' places=(files) ;;
    'firmware') options='--force' words='' places=(engine,android,panel files) ;;
    'nickname') options='--clear' words='' places=(-) ;;
    'laser-power') options='' words='' places=(-) ;;
    'z-compensation') options='' words='' places=(-) ;;
    'scaling') options='' words='' places=(-) ;;
    'skip-warmup') options='' words='' places=() ;;
    'wifi') options='' words='list status connect disconnect' places=() ;;
    'wifi list') options='' words='' places=() ;;
    'wifi status') options='' words='' places=() ;;
    'wifi connect') options='--open' words='' places=(-) ;;
    'wifi disconnect') options='' words='' places=() ;;
    'raw') options='' words='' places=(-) ;;
  esac
  COMPREPLY=()
  case $prev in
    --printer) wanted=known ;;
    --timeout|--port|--serial|--address|--index|--interval|--give-up|--then|--laser|--last|--mark|--retry) return ;;
    *)
      case $cur in
        -*) mapfile -t COMPREPLY < <(compgen -W "$options -h --help --version --json --debug --yes --usb --timeout --port --printer --serial --address --index" -- "$cur"); return ;;
      esac
      wanted=${places[place]:--}
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
    *) mapfile -t COMPREPLY < <(compgen -W "${wanted//,/ }" -- "$cur") ;;
  esac
}
complete -F _nuvctl nuvctl
