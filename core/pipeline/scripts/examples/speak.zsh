# The text comes on standard input. What this script prints takes its place; when it prints nothing, nothing more
# happens to the text.
# Read input and use the speech dispatcher to speak it
input=$(cat)

if (( $+commands[spd-say] )); then
    spd-say -- "$input" &>/dev/null &!
elif (( $+commands[espeak-ng] )); then
    espeak-ng --stdin <<< "$input" &>/dev/null &!
fi

# Return the original text so processing continues
print -r -- "$input"
