complete -c staylit -f
complete -c staylit -l diagnose -d 'Watch the machine and print a report'
complete -c staylit -l choose-apps -d 'Show the window in which applications are chosen'
complete -c staylit -l settings -d 'Show the settings window'
complete -c staylit -l pause -d 'Pause, or resume'
