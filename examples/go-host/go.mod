module kivo.example/go-host

go 1.19
