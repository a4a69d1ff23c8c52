# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Completion of stanag-overlay for fish.
function __stanag_overlay_command
    set -l words (commandline -opc)
    test (count $words) -ge 2; and contains -- $words[2] $argv
end
function __stanag_overlay_no_command
    test (count (commandline -opc)) -eq 1
end

complete -c stanag-overlay -n __stanag_overlay_no_command -f
complete -c stanag-overlay -n __stanag_overlay_no_command -l version -d 'the version'
complete -c stanag-overlay -s h -l help -d 'what it takes'
complete -c stanag-overlay -n __stanag_overlay_no_command -a burn -d 'draw the telemetry into a clip'
complete -c stanag-overlay -n __stanag_overlay_no_command -a frame -d 'make one annotated picture'
complete -c stanag-overlay -n __stanag_overlay_no_command -a keys -d 'list the telemetry, one JSON line per packet'
complete -c stanag-overlay -n __stanag_overlay_no_command -a text -d 'list what would be drawn, one JSON line per frame'
complete -c stanag-overlay -n __stanag_overlay_no_command -a schema -d 'print the JSON Schema of the configuration'
complete -c stanag-overlay -n __stanag_overlay_no_command -a check -d 'tell what of a configuration would silently be changed'
complete -c stanag-overlay -n __stanag_overlay_no_command -a edit -d 'edit a configuration in the browser, with a preview'
complete -c stanag-overlay -n __stanag_overlay_no_command -a sample -d 'make a short flight with telemetry'

complete -c stanag-overlay -n '__stanag_overlay_command burn frame text edit' -s c -l config -r -F -d 'configuration'
complete -c stanag-overlay -n '__stanag_overlay_command burn frame' -s o -l output -r -F -d 'clip, address or picture'
complete -c stanag-overlay -n '__stanag_overlay_command frame check' -l at -x -d 'which picture'

set -l telemetry '__stanag_overlay_command burn frame keys text schema check edit'
complete -c stanag-overlay -n $telemetry -l telemetry -r -F -d 'telemetry from a file'
complete -c stanag-overlay -n $telemetry -l telemetry-offset -x -d 'show it this much later'
complete -c stanag-overlay -n $telemetry -l max-age -x -d 'older telemetry counts as gone'
complete -c stanag-overlay -n $telemetry -l klv -x -d 'which KLV stream'

set -l look '__stanag_overlay_command burn frame text check edit'
complete -c stanag-overlay -n $look -l font -x -d 'font of the texts' -a '(fc-list : family 2>/dev/null | cut -d , -f 1 | sort -u)'
complete -c stanag-overlay -n $look -l outline -x -d 'dark rim around the texts'

set -l range '__stanag_overlay_command burn text'
complete -c stanag-overlay -n $range -l from -x -d 'start here'
complete -c stanag-overlay -n $range -l to -x -d 'end here'

complete -c stanag-overlay -n '__stanag_overlay_command burn sample' -l video-codec -x -d encoder \
    -a 'libx264 libx265 libvpx-vp9 ffv1 h264_nvenc h264_qsv h264_vaapi h264_v4l2m2m hevc_nvenc hevc_qsv hevc_vaapi'
set -l burn '__stanag_overlay_command burn'
complete -c stanag-overlay -n $burn -l preset -x -d 'speed against size' \
    -a 'ultrafast superfast veryfast faster fast medium slow slower veryslow'
complete -c stanag-overlay -n $burn -l bitrate -x -d 'bits per second'
complete -c stanag-overlay -n $burn -l crf -x -d 'constant quality'
complete -c stanag-overlay -n $burn -l threads -x -d 'threads of decoder and encoder each'
complete -c stanag-overlay -n $burn -l live -d 'INPUT is live'
complete -c stanag-overlay -n $burn -l telemetry-wait -x -d 'wait for telemetry at most'
complete -c stanag-overlay -n $burn -l give-up -x -d 'end without pictures after'
complete -c stanag-overlay -n $burn -l sidecar -d 'telemetry beside the output'
complete -c stanag-overlay -n $burn -l summary -r -F -d 'what was done, as JSON'
complete -c stanag-overlay -n $burn -l no-progress -d 'no progress line'

set -l keys '__stanag_overlay_command keys'
complete -c stanag-overlay -n $keys -l derived -d 'also derived keys'
complete -c stanag-overlay -n $keys -l csv -d 'a table'

set -l edit '__stanag_overlay_command edit'
complete -c stanag-overlay -n $edit -l port -x -d 'port on 127.0.0.1'
complete -c stanag-overlay -n $edit -l no-browser -d 'only print the address'

set -l sample '__stanag_overlay_command sample'
complete -c stanag-overlay -n $sample -l seconds -x -d length
complete -c stanag-overlay -n $sample -l size -x -d 'width and height'
complete -c stanag-overlay -n $sample -l fps -x -d 'frames per second'
