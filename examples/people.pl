#!/usr/bin/perl
# The C interface from Perl: what people.c does, with FFI::Platypus (Debian: libffi-platypus-perl).
#
#     people.pl people.fdb
#
# The library is libzmfbconn.so.1, or the file that ZMFB_LIBRARY names.
use strict;
use warnings;
use FFI::Platypus 1.00;
use FFI::Platypus::Buffer qw(scalar_to_buffer buffer_to_scalar);

my $ffi = FFI::Platypus->new(api => 1, lib => $ENV{ZMFB_LIBRARY} // 'libzmfbconn.so.1');
$ffi->type('(opaque, opaque, size_t, opaque)->int' => 'body');
$ffi->attach(["zmfb_$_->[0]" => $_->[0]], $_->[1], $_->[2]) for (
    [message        => []                                                => 'string'],
    [new            => []                                                => 'opaque'],
    [free           => ['opaque']                                        => 'void'],
    [kind_of        => ['opaque']                                        => 'int'],
    [prepare        => ['string']                                        => 'int'],
    [create_database => ['string', 'string', 'string']                   => 'int'],
    [connect        => ['opaque', 'string', 'string', 'string', 'string'] => 'int'],
    [exact_queries  => ['int']                                           => 'int'],
    [call           => ['opaque', 'string', 'opaque[]', 'size_t', 'opaque'] => 'int'],
    [eval           => ['opaque', 'opaque[]', 'size_t', 'opaque']        => 'int'],
    [get_member     => ['opaque', 'string', 'opaque']                    => 'int'],
    [set_error_block => ['opaque']                                       => 'int'],
    [set_text       => ['opaque', 'opaque', 'size_t']                    => 'int'],
    [set_array      => ['opaque', 'size_t']                              => 'int'],
    [set_number     => ['opaque', 'double', 'int', 'int']                => 'int'],
    [set_block      => ['opaque', 'body', 'opaque', 'opaque']            => 'int'],
    [append         => ['opaque', 'opaque']                              => 'int'],
    [get_text       => ['opaque', 'opaque*', 'size_t*']                  => 'int'],
    [get_number     => ['opaque', 'double*', 'opaque', 'opaque']         => 'int'],
    [get_logical    => ['opaque', 'int*']                                => 'int'],
    [get_size       => ['opaque', 'size_t*']                             => 'int'],
    [get_element    => ['opaque', 'size_t', 'opaque']                    => 'int'],
);
use constant { TEXT => 1, NUMBER => 2, LOGICAL => 3, ARRAY => 5 };
use constant { OK => 0, WRONG_KIND => 2 };

sub must { my ($status) = @_; die main::message() . "\n" if $status != OK; }

# A new place that holds a Perl value: a text, a number by reference (\21), an array, or a closure as a code block.
sub place {
    my ($value) = @_;
    my $place = main::new();
    if (ref $value eq 'ARRAY') {
        must(set_array($place, 0));
        for my $element (@$value) {
            my $part = place($element);
            must(append($place, $part));
            free($part);
        }
    } elsif (ref $value eq 'FFI::Platypus::Closure') {
        must(set_block($place, $value, undef, undef));
    } elsif (ref $value eq 'SCALAR') {
        must(set_number($place, $$value, 0, 0));
    } elsif (defined $value) {
        must(set_text($place, scalar_to_buffer($value)));
    }
    return $place;
}

# The value in a place as Perl has it; NIL is undef.
sub value {
    my ($place) = @_;
    my $kind = kind_of($place);
    if ($kind == TEXT) {
        must(get_text($place, \my $start, \my $length));
        return $length ? buffer_to_scalar($start, $length) : '';
    } elsif ($kind == NUMBER) {
        must(get_number($place, \my $number, undef, undef));
        return $number;
    } elsif ($kind == LOGICAL) {
        must(get_logical($place, \my $logical));
        return $logical;
    } elsif ($kind == ARRAY) {
        must(get_size($place, \my $size));
        my ($element, @elements) = (main::new());
        for my $index (1 .. $size) {
            must(get_element($place, $index, $element));
            push @elements, value($element);
        }
        free($element);
        return \@elements;
    }
    return undef;
}

# Runs a function with places for the values: (status, what it gave).
sub run {
    my ($function, @values) = @_;
    my @places = map { place($_) } @values;
    my $result = main::new();
    my $status = $function->(\@places, scalar @places, $result);
    my $given  = value($result);
    free($_) for @places, $result;
    return ($status, $given);
}

sub call_method {
    my ($object, $method, @values) = @_;
    return run(sub { main::call($object, $method, @_) }, @values);
}

# The places that the library hands to a body.
sub arguments { my ($list, $count) = @_; return @{$ffi->cast('opaque' => "opaque[$count]", $list)}; }

@ARGV == 1 or die "usage: people.pl DATABASE\n";
my ($database) = @ARGV;
must(prepare($database));
must(create_database($database, 'SYSDBA', undef));
my $connection = main::new();
must(main::connect($connection, $database, 'SYSDBA', undef, undef));
call_method($connection, 'createtable', 'people',
    [['name', 'C', \10, \0], ['born', 'D', \8, \0], ['credit', 'N', \12, \2]]);
call_method($connection, 'executeupdate',
    "insert into people (name, born, credit) values ('Anna', '2007-03-01', -12.5)");
call_method($connection, 'executeupdate', "insert into people (name) values ('Bo')");
must(exact_queries(1));
my (undef, $rows) = call_method($connection, 'executequery',
    'select name, cast(born as date), credit from people order by name');
print join(' | ', map { $_ // 'NULL' } @$_), "\n" for @$rows[1 .. $#$rows];

my $twice = $ffi->closure(sub {
    my (undef, $list, $count, $result) = @_;
    my ($first) = arguments($list, $count);
    return WRONG_KIND if kind_of($first) != NUMBER;
    return set_number($result, 2 * value($first), 0, 0);
});
my $block = place($twice);
my $eval  = sub { main::eval($block, @_) };
my (undef, $doubled) = run($eval, \21);
print "twice 21 is $doubled\n";
my ($status) = run($eval, 'no number');
print "twice a text: status $status\n";

my $array = place(["a\0b"]);
print 'bytes: ', join(' ', map { sprintf '%02x', ord } split //, value($array)->[0]), "\n";

($status) = call_method($connection, 'nosuch');
print "without an error block: status $status, ", main::message(), "\n";
my $tell = $ffi->closure(sub {
    my (undef, $list, $count) = @_;
    my $description = main::new();
    must(get_member((arguments($list, $count))[0], 'description', $description));
    print 'told: ', value($description), "\n";
    free($description);
    return OK;
});
my $error_block = place($tell);
must(set_error_block($error_block));
($status) = call_method($connection, 'nosuch');
print "with one: status $status\n";
must(set_error_block(undef));
free($_) for $error_block, $array, $block, $connection;
