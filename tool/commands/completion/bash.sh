# bash completion for gputunectl, made by: gputunectl completion bash
_gputunectl() {
    local current=${COMP_WORDS[COMP_CWORD]} place='' previous='' skip='' candidates='' word
    [ "$current" != = ] || current=''
    # Where the words before the cursor lead: to a command, or to the value of an option.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        # --option=value comes in three words.
        [ "$word" != = ] || continue
        previous=$word
        if [ -n "$skip" ]; then
            skip='' previous=''
            continue
        fi
        case "$place $word" in
            {{with-value}}) skip=yes ;;
        esac
        case $place/$word in
            {{places}}) place+=/$word ;;
        esac
    done
    COMPREPLY=()
    # Where no words are offered, bash offers the names of files, unless it is told not to.
    case "$place $previous" in
{{values}}
        *)
            case $place in
{{candidates}}
            esac
            candidates+=' {{everywhere}}'
            case $place in
                {{file-places}}) ;;
                *) compopt +o default 2>/dev/null ;;
            esac
            ;;
    esac
    # Options are many: they are offered once a word begins like one.
    case $current in
        -*) COMPREPLY=($(compgen -W "$candidates" -- "$current")) ;;
        *) COMPREPLY=($(compgen -X '-*' -W "$candidates" -- "$current")) ;;
    esac
}
complete -o default -F _gputunectl gputunectl gputunectl.exe
