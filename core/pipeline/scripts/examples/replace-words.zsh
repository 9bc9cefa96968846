# The text comes on standard input. What this script prints takes its place; when it prints nothing, nothing more
# happens to the text.
# Read input and replace specific words (preserving case)
input=$(cat)

# Without perl, return the original text
(( $+commands[perl] )) || { print -r -- "$input"; exit }

print -r -- "$input" | perl -Mutf8 -CSD -pe '
    BEGIN { %replacements = (colour => "color", grey => "gray", organise => "organize"); }
    s{\b(\w+)\b}{
        my $new = $replacements{lc $1};
        !defined $new ? $1 : $1 eq uc $1 && length $1 > 1 ? uc $new : $1 eq ucfirst lc $1 ? ucfirst $new : $new
    }gex'
