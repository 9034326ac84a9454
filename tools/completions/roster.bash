# Completion of roster for bash. The tool itself says what may stand next.

# The words typed up to the cursor, as the tool would get them. bash parts them at "=", ":" and "@" too.
_roster_words() {
    local rest=${COMP_LINE:0:COMP_POINT} behind word i
    typed=() quote=
    for ((i = 0; i <= COMP_CWORD; i++)); do
        behind=${rest#"${rest%%[![:space:]]*}"}
        word=${COMP_WORDS[i]}
        ((i < COMP_CWORD)) || word=$behind
        if ((i > 0)) && [[ $behind == "$rest" ]]; then
            typed[-1]+=$word
        else
            typed+=("$word")
        fi
        rest=${behind#"$word"}
    done
    for i in "${!typed[@]}"; do
        word=${typed[i]} quote=
        case $word in
        [\'\"]*)
            quote=${word:0:1}
            word=${word#"$quote"}
            word=${word%"$quote"}
            ;;
        *) word=${word//\\/} ;;
        esac
        typed[i]=$word
    done
}

_roster() {
    local -a typed
    local quote special="s/[][ '\"\\\\;&|<>()\$\`*?#!{}~]/\\\\&/g" current=${2//\\/} front
    _roster_words
    case $quote in
    \') special="s/'/'\\\\''/g" ;;
    \") special="s/[\"\\\\\$\`]/\\\\&/g" ;;
    esac
    # What readline leaves as it is: "--format=" of "--format=js".
    current=${current#[\'\"]}
    front=${typed[-1]%"$current"}
    local -a offers
    mapfile -t offers < <("${1/#\~\//$HOME/}" complete -- "${typed[@]:1}" 2>/dev/null)
    case ${offers[0]} in
    $'\tfiles') compopt -o default; return ;;
    $'\tfolders') compopt -o dirnames; return ;;
    esac
    mapfile -t COMPREPLY < <(
        for offer in "${offers[@]}"; do
            offer=${offer%%$'\t'*}
            printf '%s\n' "${offer#"$front"}"
        done | sed "$special"
    )
    # A word that goes on gets no blank, and no closing quote either, which readline gives to a word that is alone.
    if [[ ${COMPREPLY[0]} == *[=\;\ ] ]]; then
        compopt -o nospace
        [[ -z $quote || ${#COMPREPLY[@]} -gt 1 ]] || COMPREPLY+=("${COMPREPLY[0]}…")
    fi
}

complete -F _roster roster
