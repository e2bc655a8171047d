#!/usr/bin/perl
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# filter.pl FILE.md: prints the document as Doxygen wants it. A heading gets a label that is unique
# in the site, "operation-the-socket" for "The socket" in OPERATION.md, and links lead to labels:
# (#the-socket), (OPERATION.md#the-socket), and (../examples/a.conf), which becomes "examples-a-conf"
# where deployment.md quotes that file; a link to a file that is not in the site becomes its text.

use strict;
use warnings;

# label(NAME, [HEADING]): the label of a document or of a heading in it
sub label
{
    my $label = lc join '-', grep { defined } @_;
    $label =~ s/[`(){}.,:;?!'"]//g;
    $label =~ s/[^a-z0-9]+/-/g;
    return $label;
}

sub quotedFiles
{
    open my $page, '<', 'docs/site/deployment.md' or die "deployment.md: $!";
    return map { /\{#(examples-[\w-]+)\}/ ? ($1 => 1) : () } <$page>;
}

my %isQuoted = quotedFiles();

# Where LINK in the document NAME leads to in the site; nothing when it leads out of it.
sub target
{
    my ($name, $link) = @_;
    return $link if $link =~ m{^\w+://} || $link =~ /\.svg$/;
    $link =~ s{^(?:\.\./(?:docs/)?|site/)(?=[\w-]+\.md)}{};
    if ($link =~ s{^\.\./}{}) {
        my $isPage = $link =~ s/\.md$//;
        my $label = label($link =~ s/\W+/-/gr);
        return $isPage || $isQuoted{$label} ? "#$label" : undef;
    }
    my ($file, $heading) = $link =~ /^(?:([\w-]+)\.md)?(?:#(.*))?$/ or return $link;
    return '#' . label($file // $name, $heading);
}

# linkTo(TEXT, [TARGET])
sub linkTo
{
    my ($text, $target) = @_;
    return defined $target ? "[$text]($target)" : $text;
}

# Doxygen loses its way in spans that hold quotes, and drops a percent sign in front of a letter.
sub codeSpan
{
    my ($code) = @_;
    return "`$code`" unless $code =~ /['"%]/;
    my %entities = ('&' => '&amp;', '<' => '&lt;', '>' => '&gt;', '"' => '&quot;', "'" => '&apos;');
    $code =~ s/([\\%#@])/\\$1/g;
    $code =~ s/([&<>"'])/$entities{$1}/g;
    return "<code>$code</code>";
}

my ($name) = $ARGV[0] =~ m{(?:^|/)(?:docs/site/|docs/)?((?:\w+/)?[\w-]+)\.md$};
my $isCode = 0;
while (my $line = <>) {
    $isCode = !$isCode if $line =~ /^\s*```/;
    if (!$isCode) {
        $line =~ s/\[([^\]]*)\]\(([^)\s]+)\)/linkTo($1, target($name, $2))/ge;
        $line =~ s/(?<!`)`([^`]+)`(?!`)/codeSpan($1)/ge;
        $line =~ s/^(#+) (.*?)\s*$/"$1 $2 {#" . label($name, length $1 > 1 ? $2 : undef) . "}\n"/e
            unless $line =~ /\{#/ || $name eq 'index';
    }
    print $line;
}
