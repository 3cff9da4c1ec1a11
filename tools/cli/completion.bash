# bash completion for lsc_replay
_lsc_replay() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} options
    case ${COMP_WORDS[1]} in
        accuracy) options="--help --truth --stamp-delay --html --summary --sensor" ;;
        compare) options="--help" ;;
        import) options="--help -o --output --pid --strict" ;;
        *) options="--help --version --results --log --plot --from --to --sensor --trace --html --csv --summary --check
            --junit --cost --repeat" ;;
    esac
    case $previous in
        --from | --to | --sensor | --repeat | --pid | --stamp-delay) COMPREPLY=() ;;
        *)
            if [[ $word == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$word")
                [[ $COMP_CWORD -eq 1 ]] && mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(
                    compgen -W "accuracy compare import" -- "$word")
            fi
            ;;
    esac
}
complete -o filenames -F _lsc_replay lsc_replay
