# bash completion for lsc_replay
_lsc_replay() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [[ ${COMP_WORDS[1]} == import && $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--help -o --output --pid --ois --frames --ois-columns --frame-columns --ois-unit
            --frame-unit --readout --delay" -- "$word")
        return
    fi
    case $previous in
        --from | --to | --sensor | --repeat) COMPREPLY=() ;;
        *)
            if [[ $word == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W "--help --version --results --log --plot --from --to --sensor --trace
                    --cost --repeat" -- "$word")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$word")
                [[ $COMP_CWORD -eq 1 && import == "$word"* ]] && COMPREPLY+=(import)
            fi
            ;;
    esac
}
complete -o filenames -F _lsc_replay lsc_replay
