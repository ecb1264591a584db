GREETING = "temporary helper"
