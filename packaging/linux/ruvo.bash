# Completion of ruvo: -t, and INI files in any letter case, where shells know their folders.
_ruvo() {
    local word=${COMP_WORDS[COMP_CWORD]}
    if [[ $word == -* ]]; then
        COMPREPLY=(-t)
    else
        mapfile -t COMPREPLY < <(compgen -f -X '!*.[iI][nN][iI]' -- "$word"; compgen -d -- "$word")
    fi
}
complete -o filenames -F _ruvo ruvo
