# Made from nuvctl's --help by ./dev manuals, which also makes it anew.

# Says which subcommand has been typed, then how many words behind it.
function __nuvctl_path
    set -l path
    set -l place 0
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
        else if contains -- $word --timeout --port --printer --serial --address --index --interval --give-up --then --laser --last --mark --retry
            set skip 1
        else if string match -q -- '-*' $word
            continue
        else if contains -- (string trim -- "$path $word") 'list' 'printers' 'printers list' 'printers add' 'printers remove' 'printers rename' 'doctor' 'info' 'status' 'watch' 'resin' 'sensors' 'jobs' 'versions' 'tank' 'leds' 'send' 'cancel' 'gcode' 'firmware' 'nickname' 'laser-power' 'z-compensation' 'scaling' 'skip-warmup' 'wifi' 'wifi list' 'wifi status' 'wifi connect' 'wifi disconnect' 'raw'
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

complete -c nuvctl -f
complete -c nuvctl -n '__nuvctl_place 0 ' -a list -d 'List the printers that are known or found'
complete -c nuvctl -n '__nuvctl_place 0 ' -a printers -d 'Give printers names, which --printer takes'
complete -c nuvctl -n '__nuvctl_place 0 ' -a doctor -d 'Look for what keeps printers from being found'
complete -c nuvctl -n '__nuvctl_place 0 ' -a info -d 'Show what a printer is'
complete -c nuvctl -n '__nuvctl_place 0 ' -a status -d 'Show what a printer does'
complete -c nuvctl -n '__nuvctl_place 0 ' -a watch -d 'Follow a print until it ends'
complete -c nuvctl -n '__nuvctl_place 0 ' -a resin -d 'Show the resin in the printer'
complete -c nuvctl -n '__nuvctl_place 0 ' -a sensors -d 'Show what the sensors and the light engine measure'
complete -c nuvctl -n '__nuvctl_place 0 ' -a jobs -d 'Show the counts of jobs and the newest jobs'
complete -c nuvctl -n '__nuvctl_place 0 ' -a versions -d 'Show the versions of firmware and boards'
complete -c nuvctl -n '__nuvctl_place 0 ' -a tank -d 'Show the tank in place'
complete -c nuvctl -n '__nuvctl_place 0 ' -a leds -d 'Show how long the light source has been on'
complete -c nuvctl -n '__nuvctl_place 0 ' -a send -d 'Send a print file to a printer, or to several, and make sure that it is taken'
complete -c nuvctl -n '__nuvctl_place 0 ' -a cancel -d 'Abandon the job that is sent or printed'
complete -c nuvctl -n '__nuvctl_place 0 ' -a gcode -d 'Send a text file of printer commands'
complete -c nuvctl -n '__nuvctl_place 0 ' -a firmware -d 'Update the firmware of the engine, the Android board or the LCM panel'
complete -c nuvctl -n '__nuvctl_place 0 ' -a nickname -d 'Show or set the nickname'
complete -c nuvctl -n '__nuvctl_place 0 ' -a laser-power -d 'Show or set the laser power'
complete -c nuvctl -n '__nuvctl_place 0 ' -a z-compensation -d 'Show or set the Z compensation'
complete -c nuvctl -n '__nuvctl_place 0 ' -a scaling -d 'Show or set the scaling of the build'
complete -c nuvctl -n '__nuvctl_place 0 ' -a skip-warmup -d 'Skip the warm-up that the printer is in'
complete -c nuvctl -n '__nuvctl_place 0 ' -a wifi -d 'List, join and leave wireless networks'
complete -c nuvctl -n '__nuvctl_place 0 ' -a raw -d 'Send one command and show the reply'
complete -c nuvctl -s h -l help -d 'Print this help message and exit'
complete -c nuvctl -l version -d 'Show the version and leave'
complete -c nuvctl -l json -d 'Write one JSON document to the standard output'
complete -c nuvctl -l debug -d 'Write diagnostics of the connection to standard error'
complete -c nuvctl -l yes -d 'Do what would be asked about'
complete -c nuvctl -l usb -d 'Look for printers on USB only'
complete -c nuvctl -l timeout -x -d 'Milliseconds to wait for a printer\'s answer; a search takes 3000 of them at most'
complete -c nuvctl -l port -x -d 'UDP port of the search'
complete -c nuvctl -l printer -x -a '(nuvctl printers list --names 2>/dev/null)' -d 'Use the printer of this name or nickname, or whose serial number ends so'
complete -c nuvctl -l serial -x -d 'Use the printer whose serial number is, or ends, so'
complete -c nuvctl -l address -x -d 'Use the printer at this IPv4 address or host name; :N behind it is the port of the search'
complete -c nuvctl -l index -x -d 'Use the printer at this place of the list, from 0'
complete -c nuvctl -n '__nuvctl_place 0 printers' -a list -d 'List the printers that have a name'
complete -c nuvctl -n '__nuvctl_place 0 printers' -a add -d 'Give the printer at --address, or of --serial, a name'
complete -c nuvctl -n '__nuvctl_place 0 printers' -a remove -d 'Forget a name'
complete -c nuvctl -n '__nuvctl_place 0 printers' -a rename -d 'Change a name'
complete -c nuvctl -n '__nuvctl_at printers list' -l names -d 'Only the names, one a line'
complete -c nuvctl -n '__nuvctl_at printers add' -l replace -d 'Also when the name is taken'
complete -c nuvctl -n '__nuvctl_place 0 printers remove' -x -a '(nuvctl printers list --names 2>/dev/null)'
complete -c nuvctl -n '__nuvctl_place 0 printers rename' -x -a '(nuvctl printers list --names 2>/dev/null)'
complete -c nuvctl -n '__nuvctl_at info' -l all -d 'All printers, known and found, a row each'
complete -c nuvctl -n '__nuvctl_at status' -l all -d 'All printers, known and found, a row each'
complete -c nuvctl -n '__nuvctl_at watch' -l interval -x -d 'Milliseconds from look to look'
complete -c nuvctl -n '__nuvctl_at watch' -l give-up -x -d 'Minutes without an answer until it gives up'
complete -c nuvctl -n '__nuvctl_at watch' -l then -x -d 'Run this command at the end; NUVCTL_OUTCOME and NUVCTL_PRINTER say what it was'
complete -c nuvctl -n '__nuvctl_at watch' -l all -d 'All printers, known and found'
complete -c nuvctl -n '__nuvctl_at resin' -l all -d 'All printers, known and found, a row each'
complete -c nuvctl -n '__nuvctl_at sensors' -l laser -x -d 'Also the readings of this laser, 1 to 4'
complete -c nuvctl -n '__nuvctl_at sensors' -l flash -d 'Also the parameters in the scan unit\'s flash'
complete -c nuvctl -n '__nuvctl_at jobs' -l last -x -d 'How many of the newest jobs to list'
complete -c nuvctl -n '__nuvctl_at jobs' -l long -d 'All that the printer tells of each'
complete -c nuvctl -n '__nuvctl_at jobs' -l mark -x -d 'Note this job as the last one that a host has read'
complete -c nuvctl -n '__nuvctl_at versions' -l all -d 'All printers, known and found, a row each'
complete -c nuvctl -n '__nuvctl_at send' -l watch -d 'Then follow the print until it ends'
complete -c nuvctl -n '__nuvctl_at send' -l interval -x -d 'Milliseconds from look to look'
complete -c nuvctl -n '__nuvctl_at send' -l give-up -x -d 'Minutes without an answer until it gives up'
complete -c nuvctl -n '__nuvctl_at send' -l then -x -d 'Run this command at the end; NUVCTL_OUTCOME and NUVCTL_PRINTER say what it was'
complete -c nuvctl -n '__nuvctl_at send' -l force -d 'Send also what does not seem fit for the printer'
complete -c nuvctl -n '__nuvctl_at send' -l dry-run -d 'Only look whether it could be sent'
complete -c nuvctl -n '__nuvctl_at send' -l retry -x -d 'So often once more when the connection is lost'
complete -c nuvctl -n '__nuvctl_at send' -l progress -d 'For programs: lines "SENT TOTAL", in bytes, on standard error; the end of the standard input, a pipe, cancels'
complete -c nuvctl -n '__nuvctl_place 0 send' -F
complete -c nuvctl -n '__nuvctl_place 0 gcode' -F
complete -c nuvctl -n '__nuvctl_at firmware' -l force -d 'Send also what does not seem to be such an image'
complete -c nuvctl -n '__nuvctl_place 0 firmware' -a 'engine android panel'
complete -c nuvctl -n '__nuvctl_place 1 firmware' -F
complete -c nuvctl -n '__nuvctl_at nickname' -l clear -d 'Take the nickname away'
complete -c nuvctl -n '__nuvctl_place 0 wifi' -a list -d 'List the access points in reach of the printer'
complete -c nuvctl -n '__nuvctl_place 0 wifi' -a status -d 'Show which one the printer is joined to'
complete -c nuvctl -n '__nuvctl_place 0 wifi' -a connect -d 'Join one; its key is asked for, or read from the standard input'
complete -c nuvctl -n '__nuvctl_place 0 wifi' -a disconnect -d 'Leave it'
complete -c nuvctl -n '__nuvctl_at wifi connect' -l open -d 'It has no key, so none is read'
