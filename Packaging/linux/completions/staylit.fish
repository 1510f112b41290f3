complete -c staylit -f
complete -c staylit -l diagnose -d 'Watch the machine and print a report'
complete -c staylit -l pause -d 'Pause, or resume'
complete -c staylit -l choose-apps -d 'Show the window in which applications are chosen'
complete -c staylit -l settings -d 'Show the settings'
complete -c staylit -l background -d 'Start, or do nothing where it runs already'
complete -c staylit -l quit -d 'End the Staylit that runs'
complete -c staylit -l help -d 'Print the options'
complete -c staylit -l version -d 'Print the version'
