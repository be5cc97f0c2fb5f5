# Hides what differs from run to run in a transcript.
s/ [0-9]+\.[0-9]{3} ms$/ # ms/
s/created [0-9-]{10} [0-9:]{8}/created #/
s/[0-9]{4}[A-Z][a-z]{2}[0-9]{2}-[0-9]{2}_[0-9]{2}_[0-9]{2}/#/g
