# Says what takes how long. Sourced by ./demo, ./test and .ci/run.
#
#   begin_phase <name> [what is said]    ends the phase before, too
#   print_times <of what>                the phases and their sum, in the order in which they ran

times_of_phases=()
phase=
phase_began=0

end_phase() {
    [ -z "$phase" ] || times_of_phases+=("$phase $((SECONDS - phase_began)) s")
    phase=
}

begin_phase() {
    end_phase
    phase=$1
    phase_began=$SECONDS
    [ -z "${2:-}" ] || echo "==> $2"
}

print_times() {
    end_phase
    local times
    times=$(printf '%s, ' "${times_of_phases[@]}")
    echo "==> $1: ${times}in all $SECONDS s"
}
