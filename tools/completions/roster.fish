# Completion of roster for fish. The tool itself says what may stand next.

function __roster_offers
    set -l typed (commandline -opc)
    set -l current (commandline -ct | string trim --left --chars '\'"' | string replace --all '\\' '')
    set -l offers ($typed[1] complete -- $typed[2..-1] "$current" 2>/dev/null)
    switch "$offers[1]"
        case \tfiles
            __fish_complete_path "$current"
        case \tfolders
            __fish_complete_directories "$current"
        case '*'
            printf '%s\n' $offers
    end
end

complete --command roster --no-files --keep-order --arguments '(__roster_offers)'
