# Completion of mervo for fish: commands, options, tool ids and the names of a tool's arguments.

function __mervo_argument_names
    set -l words (commandline -opc)
    set -l names (mervo tools $words[3] --arguments 2>/dev/null)
    contains body $names; and set -a names body-file
    for name in $names
        string match -q -- "$name=*" $words; or echo $name=
    end
end

function __mervo_automations # the folders that hold a loop.json
    set -l home $MERVO_HOME
    test -n "$home"; or set home ~/mervo
    for file in (string replace -r '^~' ~ -- $home)/automations/*/loop.json
        basename (dirname $file)
    end
end

function __mervo_automation_values
    set -l words (commandline -opc)
    string match -q 'auto.*' -- $words[3]; and string replace -r '^' name= (__mervo_automations)
end

function __mervo_words # how many words stand before the cursor
    test (count (commandline -opc)) -eq $argv[1]
end

complete -c mervo -f
complete -c mervo -n '__mervo_words 1' -l help -d 'list the commands'
complete -c mervo -n '__mervo_words 1' -l version -d 'the version'
complete -c mervo -n '__mervo_words 1' -a run -d 'call one tool through the gate'
complete -c mervo -n '__mervo_words 1' -a tools -d 'list the tools'
complete -c mervo -n '__mervo_words 1' -a explain -d 'say what the gate would decide, and why'
complete -c mervo -n '__mervo_words 1' -a pending -d 'list what waits for the owner'
complete -c mervo -n '__mervo_words 1' -a autonomy -d 'show the autonomy level, or lower it'
complete -c mervo -n '__mervo_words 1' -a auto-run -d 'run an automation once'
complete -c mervo -n '__mervo_words 1' -a auto-done -d 'end the run of an automation, from inside'
complete -c mervo -n '__mervo_words 1' -a permissions -d 'show what you let Mervo use'
complete -c mervo -n '__mervo_words 1' -a bootstrap-permissions -d 'ask you for every consent in one go'
complete -c mervo -n '__mervo_words 1' -a secret -d 'keep the app password of a mail account, or try it'
complete -c mervo -n '__mervo_words 1' -a doctor -d 'what works on this machine and what does not'
complete -c mervo -n '__mervo_words 1' -a help -d 'what a command promises'

complete -c mervo -n '__fish_seen_subcommand_from run explain tools; and __mervo_words 2' -a '(mervo tools --ids 2>/dev/null)'
complete -c mervo -n '__fish_seen_subcommand_from run explain; and not __mervo_words 2' -a '(__mervo_argument_names)'
complete -c mervo -n '__fish_seen_subcommand_from run explain; and not __mervo_words 2' -a '(__mervo_automation_values)'
complete -c mervo -n '__fish_seen_subcommand_from auto-run; and __mervo_words 2' -a '(__mervo_automations)'
complete -c mervo -n '__fish_seen_subcommand_from run explain tools pending permissions bootstrap-permissions doctor' -l json -d 'print JSON instead of text'
complete -c mervo -n '__fish_seen_subcommand_from tools' -l ids -d 'the ids alone'
complete -c mervo -n '__fish_seen_subcommand_from tools' -l arguments -d "the names of one tool's arguments alone"
complete -c mervo -n '__fish_seen_subcommand_from auto-run' -l force -d 'run it although it is paused'
complete -c mervo -n '__fish_seen_subcommand_from pending; and __mervo_words 2' -a "(mervo pending 2>/dev/null | string match -rg '^([0-9A-F]{8})  ')"
complete -c mervo -n '__fish_seen_subcommand_from autonomy; and __mervo_words 2' -a 'panic copilote yolo'
complete -c mervo -n '__fish_seen_subcommand_from secret; and __mervo_words 2' -a 'set test'
complete -c mervo -n '__fish_seen_subcommand_from help; and __mervo_words 2' -a 'run tools explain pending autonomy auto-run auto-done permissions bootstrap-permissions secret doctor'
