#!/usr/bin/perl
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# overridden.pl PAGE...: Doxygen lists a member that a class overrides once more for each class that
# it derives from. This leaves the first one on each page of a class, and no empty lists.

use strict;
use warnings;

# "render (std::ostream &stream) const" of a row, whatever is said behind that; null for no function
sub signature
{
    my ($row) = @_;
    my ($member) = $row =~ m{class="memItemRight"[^>]*>(.*?)</td>}s or return undef;
    $member =~ s/<[^>]*>//g;
    return $member =~ /^(.*\)(?: const)?)/s ? $1 : undef;
}

for my $file (@ARGV) {
    open my $in, '<', $file or die "$file: $!";
    my $page = do { local $/; <$in> };
    my (%seen, %isDropped);
    while ($page =~ m{<tr class="memitem:([^"]*)">(.*?)</tr>}sg) {
        my ($row, $signature) = ($1, signature($2));
        $isDropped{$row} = 1 if defined $signature && $seen{$signature}++;
    }
    $page =~ s{(<tr class="(?:memitem|memdesc|separator):([^"]*)">.*?</tr>\n)}{$isDropped{$2} ? '' : $1}sge;
    my %isFilled = map { $_ => 1 } $page =~ / inherit (\w+)"/g;
    $page =~ s{(<tr class="inherit_header (\w+)">.*?</tr>\n)}{$isFilled{$2} ? $1 : ''}sge;
    open my $out, '>', $file or die "$file: $!";
    print $out $page;
    close $out or die "$file: $!";
}
