# Completion for the programs of Kivo: the options and their values are those that the program names for --help.
_kivo() {
    # The words as blanks part them: the shell takes the sign in join=slow for a word of its own.
    local line=${COMP_LINE:0:COMP_POINT} words before previous='' help values=''
    read -ra words <<<"$line"
    case $line in
        *' ') before='' previous=${words[-1]} ;;
        *) before=${words[-1]} previous=${words[-2]:-} ;;
    esac
    case $before in
        --*=*) previous=${before%%=*} before=${before#*=} ;;
    esac
    help=$("$1" --help 2>/dev/null) || return
    COMPREPLY=()
    case $previous in
        --scan-file | --screens | --write | --check)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$before")
            return
            ;;
        --version | --interface) values=$(_kivo_version <<<"$help") ;;
        --only) values='leaf intermediate' ;;
        --pin) values=$(_kivo_names pins <<<"$help") ;;
        --outcome) values=$(_kivo_names outcomes <<<"$help") ;;
        --fault)
            if [[ $before == *=* ]]; then
                values=$(_kivo_names faults <<<"$help" | sed "s/^/${before%%=*}=/")
            else
                values=$(sed -n 's/^endpoints: //p' <<<"$help" | tr ' ' '\n' | sed 's/$/=/')
                compopt -o nospace 2>/dev/null
            fi
            ;;
    esac
    if [ -n "$values" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$before")
        # The shell puts an answer in the place of its own last word, which begins behind the sign.
        [[ $COMP_WORDBREAKS != *=* ]] || COMPREPLY=("${COMPREPLY[@]#"${before%"${before##*=}"}"}")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$(grep -oE '^  (-h, )?--[a-z-]+' <<<"$help" | grep -oE -- '--[a-z-]+')" -- "$before")
    if [ ${#COMPREPLY[@]} -eq 0 ]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$before")
    fi
}

# The names that the help lists below a title.
_kivo_names() {
    sed -n "/^$1:\$/,/^[^ ]/s/^  \([^ ]*\).*/\1/p"
}

_kivo_version() {
    sed -nE 's/.* interface version to load: (.*) \(.*/\1/p' | sed 's/ or /, /; s/, /\n/g'
}

complete -F _kivo kivo-demo kivo-device kivo-pins kivo-platform-check kivo-simulator
