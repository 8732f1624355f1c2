# Completion of ruvo: -t, folders and INI files; case does not matter.
_ruvo() {
    local word=${COMP_WORDS[COMP_CWORD]}
    if [[ $word == -* ]]; then
        COMPREPLY=(-t)
    else
        mapfile -t COMPREPLY < <(compgen -f -X '!*.[iI][nN][iI]' -- "$word"; compgen -d -- "$word")
    fi
}
complete -o filenames -F _ruvo ruvo
