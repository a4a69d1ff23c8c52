# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Completion of stanag-overlay for bash.
_stanag_overlay() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local telemetry='--telemetry --telemetry-offset --max-age --klv' look='--font --outline'
    local range='--from --to' encoding='--video-codec --preset --bitrate --crf --threads'
    local live='--live --telemetry-wait --give-up' words
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words='burn frame keys text schema check edit sample -h --help --version'
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        return
    fi

    case "$previous" in
        --telemetry-offset | --max-age | --klv | --outline | --from | --to | --at | --bitrate | --crf | --threads | \
            --telemetry-wait | --give-up | --port | --seconds | --size | --fps)
            return ;;
        --video-codec)
            words='libx264 libx265 libvpx-vp9 ffv1 h264_nvenc h264_qsv h264_vaapi h264_v4l2m2m hevc_nvenc hevc_qsv hevc_vaapi'
            mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
            return ;;
        --preset)
            words='ultrafast superfast veryfast faster fast medium slow slower veryslow'
            mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
            return ;;
        --font)
            local IFS=$'\n'
            mapfile -t COMPREPLY < <(compgen -W "$(fc-list : family 2>/dev/null | cut -d , -f 1 | sort -u)" -- "$current")
            return ;;
        -c | --config | -o | --output | --telemetry | --summary) ;;
        *)
            case "$current" in -*) words=yes ;; esac ;;
    esac
    if [ -z "${words:-}" ]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
    fi

    case "$command" in
        burn) words="-c --config -o --output $telemetry $look $range $encoding $live --sidecar --summary --no-progress" ;;
        frame) words="-c --config -o --output --at $telemetry $look" ;;
        keys) words="--derived --csv $telemetry" ;;
        text) words="-c --config $telemetry $look $range" ;;
        schema) words="$telemetry" ;;
        check) words="--at $telemetry $look" ;;
        edit) words="-c --config --port --no-browser $telemetry $look" ;;
        sample) words='--seconds --size --fps --video-codec' ;;
        *) words='' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words -h --help" -- "$current")
}
complete -F _stanag_overlay stanag-overlay
