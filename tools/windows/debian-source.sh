# Debian's sources of what is built for Windows. Sourced by provide-qt.sh and provide-muparser.sh.
#
#   debian_source <package> <version> <folder>
#
# Unpacks a source package into <folder>/source, through package lists of its own: the system's stay
# as they are.
debian_source() {
    local package=$1 version=$2 work=$3 list
    mkdir -p "$work/apt/lists/partial" "$work/apt/archives/partial" "$work/apt/sources"
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$list" ] || continue
        sed -n 's/^deb /deb-src /p' "$list" >"$work/apt/sources/$(basename "$list" .list).list"
    done
    for list in /etc/apt/sources.list.d/*.sources; do
        [ -f "$list" ] || continue
        sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/apt/sources/$(basename "$list")"
    done
    local apt=(apt-get -q -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$work/apt/sources"
        -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt" -o APT::Sandbox::User=root)
    "${apt[@]}" update
    (cd "$work" && "${apt[@]}" source --download-only "$package=$version")
    dpkg-source -x "$work/${package}"_*.dsc "$work/source"
}
