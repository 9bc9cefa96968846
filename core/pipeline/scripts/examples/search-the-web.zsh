# The text comes on standard input. What this script prints takes its place; when it prints nothing, nothing more
# happens to the text.
# Read input and open Google search with it
input=$(cat)

# Without a way to open it, return the original text
(( $+commands[xdg-open] && $+commands[perl] )) || { print -r -- "$input"; exit }

query=$(print -rn -- "$input" | perl -0777 -pe 's/([^A-Za-z0-9._~-])/sprintf "%%%02X", ord $1/ge')
xdg-open "https://www.google.com/search?q=$query" </dev/null &>/dev/null &!
# Print nothing, so processing stops
