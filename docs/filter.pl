#!/usr/bin/perl
# Doxygen reads each page through this: links and headings are written as code hosts take them, and become what
# Doxygen takes. Every heading gets an id, a link to a page, a heading or a header becomes a reference to it, and a long
# page gets its contents.
use strict;
use warnings FATAL => 'all';
use File::Basename qw(dirname);
use Cwd qw(getcwd);

my ($path) = @ARGV;
my $root = getcwd() . '/';
$path =~ s/^\Q$root\E//;

# docs/protocols/netdisk.md: protocols-netdisk; host/ferrolink/README.md: host-ferrolink
sub page_id {
    my ($page) = @_;
    return 'mainpage' if $page eq 'docs/index.md';
    return 'overview' if $page eq 'README.md';
    return 'wire-cases' if $page eq 'tests/wire/README.md';
    $page =~ s|^docs/||;
    $page =~ s|/README\.md$||;
    $page =~ s|\.md$||;
    return $page =~ s|/|-|gr;
}

# As code hosts name the place of a heading.
sub place_id {
    my ($heading) = @_;
    $heading = lc $heading;
    $heading =~ s/[^a-z0-9_ -]//g;
    return $heading =~ s/ /-/gr;
}

sub whole_path {
    my ($target) = @_;
    my @parts;
    for my $part (split m|/|, dirname($path) . "/$target") {
        if ($part eq '..') { pop @parts }
        elsif ($part ne '.' && $part ne '') { push @parts, $part }
    }
    return join '/', @parts;
}

sub link_to {
    my ($text, $target) = @_;
    $text =~ s/\n\s*/ /g;
    return "[$text]($target)" if $target =~ /^[a-z]+:/;
    my ($file, $place) = $target =~ /^([^#]*)#?(.*)$/;
    $file = $file eq '' ? $path : whole_path($file);
    # Doxygen fails for a reference that leads nowhere.
    return "[$text](\@ref missing-$file)" if !-e $file;
    if ($file =~ /\.md$/) {
        my $id = page_id($file) . ($place eq '' ? '' : "-$place");
        return "[$text](\@ref $id)";
    }
    return "[$text](\@ref ${\ ($file =~ s|.*/||r)})" if $file =~ m{^(include|host/ferrolink/include)/.*\.h$};
    return $text;
}

# Doxygen takes a backslash within a code span for the beginning of a command or for hiding the span's end, and looks
# for a quotation mark's counterpart behind it.
sub code_span {
    my ($code) = @_;
    return "`$code`" if $code !~ /\\/ && $code =~ tr/"// % 2 == 0;
    $code =~ s/&/&amp;/g;
    $code =~ s/"/&quot;/g;
    $code =~ s/</&lt;/g;
    $code =~ s/>/&gt;/g;
    $code =~ s/([\\@\$%#])/\\$1/g;
    return "<code>$code</code>";
}

my $page = page_id($path);
my %uses;

sub heading {
    my ($marks, $text, $contents) = @_;
    my $id = $marks eq '#' ? $page : "$page-" . place_id($text);
    $id .= "-$uses{$id}" if $uses{$id}++;
    return "$marks $text {#$id}" . ($marks eq '#' ? $contents : '');
}

open my $file, '<', $path or die "$path: $!";
my $text = do { local $/; <$file> };
my $contents = (() = $text =~ /^## /mg) > 3 ? "\n\n[TOC]" : '';
for my $part (split /(^ *```.*?^ *```$)/ms, $text) {
    if ($part !~ /^ *```/) {
        $part =~ s/^(#{1,4}) (.*?) *$/heading($1, $2, $contents)/gme;
        $part =~ s/`([^`]+)`/code_span($1)/ge;
        $part =~ s/(?<!!)\[([^\]]+)\]\(([^)\s]+)\)/link_to($1, $2)/ge;
    }
    print $part;
}
