# Every step of docs/install.md on this machine, and what it must have led to. Sourced by run.sh.
# shellcheck shell=bash
echo "Installing, visiting, upgrading, removing"
mkdir -p "$work/bin" "$work/place/build/release"
cp "$deb" "$work/place/build/release"
# This machine's first process is no systemd: a start of the service does what its unit says, all else is told.
cat >"$work/bin/systemctl" <<'END'
#!/bin/bash
echo "systemctl $*" >>"$ASKED"
unit=/lib/systemd/system/ruvo@.service
if [[ "$1 $2" =~ ^start\ ruvo@(.*)\.service$ ]]; then
    site=${BASH_REMATCH[1]}
    variables=$(sed -n "s|^Environment=||p" "$unit" | sed "s|%t|/run|g; s|%i|$site|g")
    command=$(sed -n "s|^ExecStart=||p" "$unit" | sed "s|%i|$site|g")
    # shellcheck disable=SC2086
    umask "$(sed -n 's/^UMask=//p' "$unit")"
    runuser -u "$(sed -n 's/^User=//p' "$unit")" -- env -i $variables $command
fi
END
printf '#!/bin/sh\necho "journalctl $*" >>"$ASKED"\n' >"$work/bin/journalctl"
chmod +x "$work/bin"/*
export ASKED=$work/asked

step() { # takes the next command of docs/install.md, which begins with these words
    local line
    steps=$((steps + 1))
    line=$(sed -n 's/^# \([a-z].*\)$/\1/p' docs/install.md | sed -n "${steps}p")
    [[ "$line" == "$1"* ]] || { echo "the document goes on with: $line"; return 1; }
    (cd "$work/place" && PATH=$work/bin:$PATH bash -c "$line") >"$work/step.log" 2>&1 <"${2:-/dev/null}"
}
try() { # a step that ends with this status, shown when it does not
    local status=0
    step "$2" "${3:-/dev/null}" || status=$?
    [ "$status" -eq "$1" ] || { echo "ended with $status"; cat "$work/step.log"; return 1; }
}
steps=0

export DEBIAN_FRONTEND=noninteractive
check "install" try 0 "apt install"
modes() { stat -c '%a %U %G %n' "$@"; }
check "folders" equal "$(modes /etc/ruvo /var/lib/ruvo /var/log/ruvo /run/ruvo)" \
    "$(printf '%s\n' '2750 root ruvo /etc/ruvo' '2750 ruvo ruvo-events /var/lib/ruvo' '2750 ruvo ruvo-events /var/log/ruvo' '755 ruvo ruvo /run/ruvo')"
check "groups" equal "$(id -nG ruvo)" "ruvo dialout ruvo-events"
check "units" silent systemd-analyze verify --man=yes /lib/systemd/system/ruvo@.service /lib/systemd/system/ruvo@.timer
# The last Sunday of March leaves out an hour; that of October has one twice.
nights() { # the UTC times of the visits from noon of this day on
    TZ=Europe/Berlin systemd-analyze calendar --base-time="$1 12:00" --iterations=3 \
        "$(sed -n 's/^OnCalendar=//p' /lib/systemd/system/ruvo@.timer)" | sed -n 's/^ *(in UTC): [A-Z][a-z]* //p'
}
check "a visit in the night when summer time begins" equal "$(nights 2027-03-27)" \
    "$(printf '2027-03-%s 02:00:00 UTC\n' 28 29 30)"
check "a visit in the night when summer time ends" equal "$(nights 2027-10-30)" \
    "$(printf '2027-%s 02:00:00 UTC\n' 10-31 11-01 11-02)"
exposure=$(systemd-analyze security --offline=true --no-pager /lib/systemd/system/ruvo@.service | sed -n 's/^.*exposure level for [^:]*: \([0-9.]*\) .*/\1/p')
echo "  exposure of the service: $exposure of 10"
check "exposure of the service" awk "BEGIN { exit !($exposure < 2) }"
for page in ruvo ruvoctl ruvo.ini ruvo-events ruvo-substation; do
    check "man $page" test -n "$(man -w "$page")"
done
check "libraries of what is installed" equal "$(libraries /usr/bin/ruvo)" "libc.so.6 libgcc_s.so.1 libm.so.6 libstdc++.so.6 "
# A check as the documented one, which takes no server for granted.
cat >"$work/alone.ini" <<END
[RUVO_GENERAL]
EventRootDir=$work/events
ErrorLogPathname=$work/alone.log
[RUVO_SERIAL]
RV001=1
END
ruvo -t "$work/alone.ini" >"$work/alone.txt"
check "without a server named there is none" grep -q "P32LS failed to open" "$work/alone.txt"

check "demo: its file" try 0 "cp "
check "demo: its environment" try 0 "cp "
check "demo: check" try 0 "runuser"
check "demo: a visit with problems" try 1 "runuser"
check "demo: the problems are shown" grep -q "Invalid password" "$work/step.log"
check "demo: events" try 0 "ruvoctl events"
check "demo: as many as the serial relays have" equal "$(ruvoctl events --format json /var/lib/ruvo/demo | wc -l)" 9
check "demo: whose files they are" equal "$(find /var/lib/ruvo/demo /var/log/ruvo/demo.log -not -user ruvo | wc -l)" 0

for name in "two words" süd -x; do
    check "a name that no timer can have: $name" ends_with 1 ruvoctl new "/etc/ruvo/$name.ini" --link serial --relay 5
done
check "none of these was made" equal "$(ls -A /etc/ruvo)" "$(printf '%s\n' demo.env demo.ini registry.ini)"
check "yard: its file" try 0 "ruvoctl new"
check "yard: read by its group" equal "$(modes /etc/ruvo/yard.ini)" "640 root ruvo /etc/ruvo/yard.ini"
echo BAY1PASS >"$work/password"
check "yard: password" try 0 "ruvoctl password set" "$work/password"
check "yard: read by its group still" equal "$(modes /etc/ruvo/yard.ini)" "640 root ruvo /etc/ruvo/yard.ini"
check "yard: relays" try 0 "ruvoctl list"
check "yard: the relay and its password" grep -q "RV001.*10.20.0.5" "$work/step.log"
# The site's server: here the simulated one, named as a real one would be.
printf '%s\n' '[CLSID\{9A69E99F-E86F-455D-B971-355C1139963E}]' 'InprocServer32=/usr/lib/ruvo/simulator/p32ls.so' >>/etc/ruvo/registry.ini
echo "P32LS_SUBSTATION=/usr/share/doc/ruvo/examples/simulator/substation.toml" >/etc/ruvo/yard.env
check "yard: check" try 0 "runuser"
check "yard: paths" try 0 "ruvoctl paths"
check "yard: where things go" equal "$(cat "$work/step.log")" "$(printf 'events: /var/lib/ruvo/yard\nlog: /var/log/ruvo/yard.log')"
check "yard: scheduled" try 0 "systemctl enable"
check "yard: visited, one event passed over" try 1 "systemctl start"
check "yard: events" equal "$(ruvoctl events --format json /var/lib/ruvo/yard | wc -l)" 500
check "yard: lock" test -f /run/ruvo/*@yard.lock
check "timers" try 0 "systemctl list-timers"
check "failed units" try 0 "systemctl --failed"
check "journal" try 0 "journalctl"
check "report" try 0 "ruvoctl report"
check "report: a page" grep -q "</html>" "$work/place/yard.html"
check "status: last night's line in the log" try 1 "ruvoctl status"
check "status: the verdict" grep -q "^WARNING" "$work/step.log"
watcher() { setpriv --reuid=nobody --regid=nogroup --groups="$1" -- "${@:2}"; }
check "who watches has the group for it" ends_with 1 watcher ruvo-events ruvoctl status /var/lib/ruvo/yard /var/log/ruvo/yard.log
check "and can read the events, but no site file" watcher ruvo-events sh -c 'ruvoctl events /var/lib/ruvo/yard && ! cat /etc/ruvo/yard.ini'
check "who has not, reads nothing" not watcher nogroup ls /var/lib/ruvo /var/log/ruvo
check "what a visit makes is for its group" equal "$(find /var/lib/ruvo/yard /var/log/ruvo/yard.log -not -group ruvo-events)" ""
check "and for nobody else" equal "$(find /var/lib/ruvo/yard -perm /o=rwx)" ""
check "archive" try 0 "ruvoctl archive"
check "find" try 0 "ruvoctl find"
check "taken off the schedule" try 0 "systemctl disable"
check "nothing of the document is left out" equal "$(sed -n 's/^# \([a-z].*\)$/\1/p' docs/install.md | wc -l)" "$steps"

visit() { runuser -u ruvo -- /usr/lib/ruvo/run-site "$1"; }
sed -i 's/^RV001=10.*/RV001=10.20.0.6,2/; /\[RUVO_PASSWORDS\]/q' /etc/ruvo/yard.ini
check "a visit without problems" silent ends_with 0 visit yard
sed 's|/var/lib/ruvo/yard|/usr/lib/ruvo/events|' /etc/ruvo/yard.ini >/etc/ruvo/shut.ini
check "a site that cannot write its events" ends_with 2 visit shut
check "a site that is not there" ends_with 2 visit nowhere
check "the site's name with its ending" silent ends_with 0 visit yard.ini
check "run-site --help" equal "$(/usr/lib/ruvo/run-site --help | grep -c 'run-site .*SITE\|Exit status:')" 2
check "an option that is none" ends_with 2 visit --chekc
check "a file that the extractor would not take" ends_with 2 visit ./yard.conf
lock=$(echo /run/ruvo/ruvo*HX.lock)
while_visited() { # a site that is being visited, and what is done meanwhile
    flock --shared "$lock" flock "${lock%.lock}@$1.lock" runuser -u ruvo -- "${@:2}"
}
refused() { "$@" && tail -n 1 /var/log/ruvo/yard.log | grep -q "Only one instance"; }
check "one site never twice" ends_with 1 while_visited yard /usr/lib/ruvo/run-site yard
check "not beside it, started by hand" refused while_visited yard env HOME=/root XDG_RUNTIME_DIR="$work" ruvo /etc/ruvo/yard.ini
check "nor beside one that was" refused ends_with 1 flock "$lock" runuser -u ruvo -- /usr/lib/ruvo/run-site yard
check "two sites at once" silent while_visited demo /usr/lib/ruvo/run-site yard

# Root goes on as the user that owns what it finds: neither a link nor a file may become root's.
others() { find /var/lib/ruvo/yard /var/log/ruvo -not -user ruvo; }
echo untouched >"$work/roots"
sed 's|/yard|/bait|' /etc/ruvo/yard.ini >/etc/ruvo/bait.ini
cp /etc/ruvo/yard.env /etc/ruvo/bait.env
chgrp ruvo /etc/ruvo/bait.ini
install -d -o ruvo -g ruvo-events /var/lib/ruvo/bait
ln -s "$work/roots" /var/log/ruvo/bait.log
chown -h ruvo /var/log/ruvo/bait.log
check "root: a planted link" ends_with 2 /usr/lib/ruvo/run-site bait
check "root: is not followed" equal "$(cat "$work/roots")" untouched
rm -r /etc/ruvo/bait.* /var/lib/ruvo/bait /var/log/ruvo/bait.log
check "root: a visit" silent /usr/lib/ruvo/run-site yard
check "root: leaves nothing of its own" equal "$(others)" ""
install -d -o nobody "$work/nobody"
chmod a+x "$work"
printf '%s\n' '[RUVO_GENERAL]' "EventRootDir=$work/nobody/a/b" "ErrorLogPathname=$work/nobody/log" '[RUVO_SERIAL]' RV001=5 >"$work/nobody/own.ini"
cp /etc/ruvo/yard.env "$work/nobody/own.env"
chown nobody "$work"/nobody/*
check "root: another file" ends_with 2 /usr/lib/ruvo/run-site "$work/nobody/own.ini" # its owner has no home, and so no lock
check "root: as its owner" equal "$(stat -c %U "$work/nobody/log")" nobody
sed -i "s|^EventRootDir=.*|EventRootDir=$work/of-root|" "$work/nobody/own.ini"
check "root: not with the file of another" ends_with 2 /usr/lib/ruvo/run-site "$work/nobody/own.ini"
check "root: nothing of it was done" equal "$(wc -l <"$work/nobody/log")$(find "$work/of-root" 2>/dev/null)" 1
# A file of root's own, whose events or log another user leads to a place of root's.
mkdir "$work/of-root"
ln -s "$work/of-root" "$work/nobody/way"
leads_root() { # where events and log are said to be
    printf '%s\n' '[RUVO_GENERAL]' "EventRootDir=$1" "ErrorLogPathname=$2" '[RUVO_SERIAL]' RV001=5 >"$work/roots.ini"
    ends_with 2 /usr/lib/ruvo/run-site "$work/roots.ini" && equal "$(find "$work/of-root" "$work/roots.log")" "$work/of-root"
}
check "root: no events where another leads" leads_root "$work/nobody/way/a" "$work/roots.log"
check "root: no log where another leads" leads_root "$work/of-root" "$work/nobody/way/log"

# Lines of the environment reach the programs and nothing else; what is no such line is told, and the visit is made.
visited_with() { # status, line
    local events status=0 before
    before=$(ruvoctl events --format json /var/lib/ruvo/yard | wc -l)
    printf '%s\n' "$2" >>/etc/ruvo/yard.env
    visit yard || status=$?
    sed -i '$d' /etc/ruvo/yard.env
    events=$(ruvoctl events --format json /var/lib/ruvo/yard | wc -l)
    equal "$status $((events - before))" "$1 1"
}
for line in mode=fast here=/x ini=/x site=x line=x log=/x lines= status=1 PATH= IFS=u; do
    check "environment: $line" visited_with 0 "$line"
done
for line in COMMS-PORT=1 1ST=x =x alone OPTIND=x RUVO_LOCK_DIR=/none RUVO_SITE=x; do
    check "environment: $line is refused" visited_with 2 "$line"
done
not_taken() { # what lets another user write the file, and what ends that
    local status=0
    $1 /etc/ruvo/yard.env
    visit yard >"$work/taken" 2>&1 || status=$?
    $2 /etc/ruvo/yard.env
    equal "$status $(grep -c 'yard.env: not taken' "$work/taken")" "2 1"
}
check "environment: not where the group may write it" not_taken "chmod g+w" "chmod g-w"
check "environment: not where others may write it" not_taken "chmod o+w" "chmod o-w"
check "environment: not another user's" not_taken "chown nobody" "chown root"
install -d -o ruvo /var/lib/ruvo/.config/ruvo
printf '%s\n' '[CLSID\{9A69E99F-E86F-455D-B971-355C1139963E}]' 'InprocServer32=/none.so' >/var/lib/ruvo/.config/ruvo/registry.ini
check "no registry of the services' user" ends_with 0 runuser -u ruvo -- env HOME=/var/lib/ruvo /usr/lib/ruvo/run-site yard
rm -r /var/lib/ruvo/.config
secret() { ! visit yard 2>&1 | grep -q hidden; }
echo "COMMS KEY=hidden" >>/etc/ruvo/yard.env
check "environment: nothing of a line is shown" secret
sed -i '$d' /etc/ruvo/yard.env
runuser -u ruvo -- env P32LS_SUBSTATION=/usr/share/doc/ruvo/examples/simulator/substation.toml ruvo -t /etc/ruvo/yard.ini >"$work/check-only"
check "ruvo -t" grep -q "No input errors found" "$work/check-only"

complete_words() { # what is offered for the last of these words
    # shellcheck disable=SC2016
    bash -c 'source "/usr/share/bash-completion/completions/$1"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_$1"; echo ${COMPREPLY[*]}' _ "$@"
}
check "completion: commands" equal "$(complete_words ruvoctl ch)" "check"
check "completion: options" equal "$(complete_words ruvoctl events --so)" "--sort"
check "completion: choices" equal "$(complete_words ruvoctl events --format "")" "text json csv"
check "completion: first words" equal "$(complete_words ruvoctl password e)" "encrypt"
check "completion: INI files" equal "$(cd /etc/ruvo && complete_words ruvo y)" "yard.ini"
check "completion: found by the shell's own loader" bash -c \
    'source /usr/share/bash-completion/bash_completion; _completion_loader ruvoctl; complete -p ruvoctl'
for command in $(ruvoctl --help | sed -n '/^Subcommands:/,$s/^  \([a-z]\+\) .*/\1/p'); do
    options=$(ruvoctl "$command" --help | grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+' | LC_ALL=C sort -u | tr '\n' ' ')
    check "completion: options of $command" equal "$(complete_words ruvoctl "$command" -- | tr ' ' '\n' | LC_ALL=C sort -u | tr '\n' ' ')" "$options"
done

cc -I/usr/include -o "$work/check_relay" /usr/share/doc/ruvo/examples/c/check_relay.c -L/usr/lib/ruvo -lruvo -Wl,-rpath,/usr/lib/ruvo
check "the example in C" env P32LS_SUBSTATION=/usr/share/doc/ruvo/examples/simulator/substation.toml "$work/check_relay" /etc/ruvo/yard.ini RV001

sums() { find /etc/ruvo /var/lib/ruvo -type f -exec sha256sum {} + | LC_ALL=C sort; }
before=$(sums)
newer=$(dpkg-query -W -f '${Version}' ruvo | cut -d- -f1).1
cmake -E chdir build/release cpack -G DEB -D CPACK_PACKAGE_VERSION="$newer" -B "$work/newer" >"$work/cpack.log"
check "upgrade" dpkg -i "$work"/newer/ruvo_"$newer"-1_*.deb
check "upgrade: version" equal "$(dpkg-query -W -f '${Version}' ruvo)" "$newer-1"
check "upgrade: sites, registry and events stay" equal "$(sums)" "$before"
check "upgrade: no copies of files" equal "$(find /etc/ruvo -name '*.dpkg-*')" ""
check "upgrade: a visit" ends_with 0 visit yard
# The machine's own systemctl can enable without a running systemd.
check "enable" systemctl enable ruvo@yard.timer
check "enable: its link" test -L "$enabled"
[ -d "$stamps" ] || { mkdir -p "$stamps" && made_stamps=1; }
touch "$stamps/stamp-ruvo@yard.timer"
check "remove" dpkg -r ruvo
check "remove: programs and units are gone" not ls /usr/bin/ruvo /usr/lib/ruvo /lib/systemd/system/ruvo@.service /usr/share/doc/ruvo
check "remove: the rest stays" test -f /etc/ruvo/registry.ini -a -f /etc/ruvo/yard.ini -a -d /var/lib/ruvo/yard -a -f /var/log/ruvo/yard.log -a -L "$enabled"
# Comes back on a machine that systemd runs, as far as the package's scripts see.
booted=/run/systemd/system
[ ! -d "$booted" ] || booted=
[ -z "$booted" ] || mkdir -p "$booted"
printf '#!/bin/sh\necho "invoke $*" >>"$ASKED"\n' >"$work/bin/deb-systemd-invoke"
chmod +x "$work/bin/deb-systemd-invoke"
check "reinstall" env PATH="$work/bin:$PATH" dpkg -i "$deb"
[ -z "$booted" ] || rmdir "$booted"
check "reinstall: the timer begins again" equal "$(tail -n 1 "$ASKED")" "invoke start ruvo@yard.timer"
check "purge" dpkg --purge ruvo
check "purge: day files and sites stay" test -f /etc/ruvo/yard.ini -a -d /var/lib/ruvo/yard
for left in /etc/ruvo/registry.ini /var/log/ruvo "$enabled" "$stamps/stamp-ruvo@yard.timer"; do
    check "purge: $left is gone" test ! -e "$left" -a ! -L "$left"
done
# Again, with nothing to keep.
rm -rf /etc/ruvo /var/lib/ruvo
dpkg -i "$deb" >"$work/again.log" 2>&1
check "purge of an unused package" dpkg --purge ruvo
check "purge: nothing is left" equal "$(ls -d /etc/ruvo /var/lib/ruvo /var/log/ruvo /run/ruvo 2>/dev/null)" ""
